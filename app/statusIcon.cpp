#include "statusIcon.h"

#include "IconProvider.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Mode = QuorvelController::Mode;

/// The accents of the interface, each as the tile behind the sign or the figure.
QColor accentOf(Mode mode)
{
    switch (mode) {
    case Mode::Ready:
        return QColor(0x6C, 0x6C, 0x78);
    case Mode::Locked:
        return QColor(0xFF, 0x69, 0x61);
    case Mode::Studying:
        return QColor::fromRgbF(0.63f, 0.33f, 1.0f);
    case Mode::BreakTime:
        return QColor::fromRgbF(0.27f, 1.0f, 0.56f);
    }
    Q_UNREACHABLE();
}

/// White reads on all accents but the bright green.
QColor inkOn(Mode mode)
{
    return mode == Mode::BreakTime ? QColor(3, 5, 5) : QColor(Qt::white);
}

QString figureOf(qint64 seconds)
{
    const qint64 minutes = std::max<qint64>((seconds + 59) / 60, 0);
    return minutes < 100 ? QString::number(minutes) : QString::number((minutes + 59) / 60) + u"h"_s;
}

void drawFigure(QPainter &painter, const QString &figure, const QColor &ink, int side)
{
    // As large as fits into the tile: two digits then are about 12 pixels high on a 22 pixel panel.
    QFont font;
    font.setWeight(QFont::Bold);
    font.setPixelSize(std::max(1, side * 3 / 4));
    const qreal room = side * 0.9;
    const auto width = QFontMetricsF(font).horizontalAdvance(figure);
    if (width > room)
        font.setPixelSize(std::max(1, int(font.pixelSize() * room / width)));
    painter.setFont(font);
    painter.setPen(ink);
    const QFontMetricsF metrics(font);
    const QPointF start((side - metrics.horizontalAdvance(figure)) / 2, (side + metrics.capHeight()) / 2);
    painter.drawText(start, figure);
}

QPixmap drawAtSize(const StatusLook &look, int side)
{
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    QPainterPath tile;
    tile.addRoundedRect(QRectF(0, 0, side, side), side * 0.24, side * 0.24);
    painter.fillPath(tile, accentOf(look.mode));
    const auto ink = inkOn(look.mode);
    if (!look.figure.isEmpty()) {
        drawFigure(painter, look.figure, ink, side);
        return pixmap;
    }
    const int iconSide = side * 3 / 4;
    const auto name = look.mode == Mode::Locked ? u"lock"_s : u"brand"_s;
    painter.drawImage(QPoint((side - iconSide) / 2, (side - iconSide) / 2), drawIcon(name, ink, iconSide));
    return pixmap;
}

} // namespace

StatusLook statusLook(Mode mode, qint64 studyRemaining, qint64 breakRemaining)
{
    if (mode == Mode::Studying)
        return {mode, figureOf(studyRemaining)};
    if (mode == Mode::BreakTime)
        return {mode, figureOf(breakRemaining)};
    return {mode, {}};
}

QIcon drawStatusIcon(const StatusLook &look)
{
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 44, 64})
        icon.addPixmap(drawAtSize(look, side));
    return icon;
}
