#include "sessionBus.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

QDBusConnection sessionBusIfThere()
{
    // Without either, Qt would try to start a bus of its own.
    const auto runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const bool there = qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
                       (!runtime.isEmpty() && QFileInfo::exists(runtime + "/bus"_L1));
    return there ? QDBusConnection::sessionBus() : QDBusConnection(u"no session bus"_s);
}
