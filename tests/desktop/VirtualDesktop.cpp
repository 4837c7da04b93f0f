#include "VirtualDesktop.h"

#include "desktopParts.h"
#include "freeDisplay.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace {

void end(QProcess &process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(patience)) {
        process.kill();
        process.waitForFinished();
    }
}

} // namespace

VirtualDesktop::VirtualDesktop()
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    for (auto *process : {&m_server, &m_manager, &m_bus})
        bindToTest(*process);
    for (const auto &name : {u"WAYLAND_DISPLAY"_s, u"DESKTOP_STARTUP_ID"_s, u"QT_QPA_PLATFORM"_s,
                             u"SESSION_MANAGER"_s, u"XDG_CURRENT_DESKTOP"_s})
        m_environment.remove(name);
    const std::pair<QString, QString> folders[] = {{u"HOME"_s, u"home"_s},
                                                   {u"XDG_CONFIG_HOME"_s, u"config"_s},
                                                   {u"XDG_DATA_HOME"_s, u"data"_s},
                                                   {u"XDG_RUNTIME_DIR"_s, u"run"_s}};
    for (const auto &[variable, name] : folders) {
        QDir().mkpath(filePath(name));
        m_environment.insert(variable, filePath(name));
    }
    QFile::setPermissions(filePath(u"run"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_works = startServer() && startBus();
}

VirtualDesktop::~VirtualDesktop()
{
    end(m_manager);
    end(m_bus);
    end(m_server);
    if (const auto display = m_environment.value(u"DISPLAY"_s); m_works)
        clearDisplay(display);
}

bool VirtualDesktop::startServer()
{
    // Abstract sockets are seen from every file system, so another system's server of that number could
    // answer. A server that resets when its last client leaves takes with it whoever connects at that moment.
    m_server.start(u"Xvfb"_s,
                   {freeDisplay(), u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1400x1000x24"_s,
                    u"-nolisten"_s, u"tcp"_s, u"-nolisten"_s, u"local"_s, u"-noreset"_s});
    const auto number = QString::fromLatin1(firstLine(m_server));
    if (number.isEmpty())
        return false;
    m_environment.insert(u"DISPLAY"_s, u":"_s + number);
    m_manager.setProcessEnvironment(m_environment);
    m_manager.start(u"openbox"_s, {});
    return waitForManager(m_environment, m_manager);
}

bool VirtualDesktop::startBus()
{
    m_bus.setProcessEnvironment(m_environment);
    m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    const auto address = QString::fromUtf8(firstLine(m_bus));
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, address);
    return !address.isEmpty();
}

QString VirtualDesktop::run(const QString &program, const QStringList &arguments) const
{
    return outputOf(m_environment, program, arguments);
}

QString VirtualDesktop::report() const
{
    return desktopReport(m_environment, {&m_server, &m_manager, &m_bus});
}
