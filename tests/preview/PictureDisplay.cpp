#include "PictureDisplay.h"

#include "desktopParts.h"
#include "freeDisplay.h"
#include "setUpInterface.h"

#include <QHashSeed>

using namespace Qt::StringLiterals;

PictureDisplay::PictureDisplay()
    : m_display(freeDisplay())
{
    // Glyphs come into their texture in the order of a hash; where they lie there decides how they are
    // rounded.
    QHashSeed::setDeterministicGlobalSeed();
    bindToTest(m_server);
    m_server.start(u"Xvfb"_s,
                   {m_display, u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"4200x4200x24"_s, u"-dpi"_s,
                    u"96"_s, u"-nolisten"_s, u"tcp"_s, u"-nolisten"_s, u"local"_s, u"-noreset"_s});
    m_works = !firstLine(m_server).isEmpty();
    qputenv("DISPLAY", m_display.toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("LIBGL_ALWAYS_SOFTWARE", "1");
    qputenv("QSG_RENDER_LOOP", "basic");
    qunsetenv("WAYLAND_DISPLAY");
    setUpDrawing();
}

PictureDisplay::~PictureDisplay()
{
    m_server.terminate();
    if (!m_server.waitForFinished(patience)) {
        m_server.kill();
        m_server.waitForFinished();
    }
    clearDisplay(m_display);
}
