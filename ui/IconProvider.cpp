#include "IconProvider.h"

#include <QHash>
#include <QLoggingCategory>
#include <QPainter>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcIcons, "quorvel.ui.icons")

namespace {

/// Side of the grid on which the icons are drawn, in pixels.
constexpr int iconGrid = 24;

/// The file that shows a character's avatar symbol; any other name is that of a file already.
QString fileOf(const QString &name)
{
    static const QHash<QString, QString> avatars{
        {u"figure.walk"_s, u"walk"_s},         {u"bolt.fill"_s, u"bolt"_s},
        {u"brain.head.profile"_s, u"brain"_s}, {u"shield.lefthalf.filled"_s, u"shield-half"_s},
        {u"flame.fill"_s, u"flame-filled"_s},  {u"crown.fill"_s, u"crown"_s},
    };
    return avatars.value(name, name);
}

} // namespace

QImage drawIcon(const QString &name, const QColor &color, int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer renderer(u":/quorvel/icons/"_s + fileOf(name) + u".svg"_s);
    if (!renderer.isValid()) {
        qCWarning(lcIcons) << "there is no icon" << name;
        return image;
    }
    QPainter painter(&image);
    renderer.render(&painter);
    // The files are white: keep their coverage, take the colour.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

IconProvider::IconProvider()
    : QQuickImageProvider(QQuickImageProvider::Image)
{}

QImage IconProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const int side = requestedSize.width() > 0 ? requestedSize.width() : iconGrid;
    if (size)
        *size = QSize(side, side);
    const auto name = id.section(u'/', 0, 0);
    return drawIcon(name, QColor(u"#"_s + id.section(u'/', 1, 1)), side);
}
