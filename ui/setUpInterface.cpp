#include "setUpInterface.h"

#include "IconProvider.h"
#include "installAccessibleItems.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickStyle>

using namespace Qt::StringLiterals;

void setUpInterface(QQmlEngine &engine)
{
    QQuickStyle::setStyle(u"Basic"_s);
    auto font = QGuiApplication::font();
    font.setFamilies({u"Inter"_s, font.family()}); // where Inter is not installed, the desktop's own
    QGuiApplication::setFont(font);

    installAccessibleItems();
    engine.addImportPath(u":/qt/qml"_s);
    engine.addImageProvider(u"icons"_s, new IconProvider); // the engine owns it
}
