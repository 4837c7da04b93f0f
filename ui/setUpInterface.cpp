#include "setUpInterface.h"

#include "IconProvider.h"
#include "heldKeys.h"
#include "installAccessibleItems.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

void setUpInterface(QQmlEngine &engine)
{
    QQuickStyle::setStyle(u"Basic"_s);
    auto font = QGuiApplication::font();
    font.setFamilies({u"Inter"_s, font.family()}); // where Inter is not installed, the desktop's own
    QGuiApplication::setFont(font);

    installAccessibleItems();
    pressHeldKeysOnce(*QCoreApplication::instance());
    engine.addImportPath(u":/qt/qml"_s);
    engine.addImageProvider(u"icons"_s, new IconProvider); // the engine owns it
}

void setUpDrawing()
{
    const auto preset = [](const char *name, const char *value) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    };
    // Glass covers nothing, so a buffer of what is covered saves nothing and costs four bytes a pixel.
    preset("QSG_NO_DEPTH_BUFFER", "1");
    // The icons need a small part of the texture that Qt sets aside for small pictures, eight megabytes else.
    preset("QSG_ATLAS_WIDTH", "512");
    preset("QSG_ATLAS_HEIGHT", "512");
    // The font engine's own glyphs: sharper at these sizes than Qt's scaled ones, without coloured fringes,
    // and about a fifth cheaper to draw where there is no graphics processor. Nothing here is scaled but for
    // a press.
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
}
