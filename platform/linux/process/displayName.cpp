#include "displayName.h"

QString displayName(QByteArray display)
{
    if (display.startsWith("unix:"))
        display.remove(0, 4);
    const auto colon = display.lastIndexOf(':');
    const auto screen = colon < 0 ? -1 : display.indexOf('.', colon);
    return QString::fromLocal8Bit(screen < 0 ? display : display.first(screen));
}
