#include "windowTexts.h"

#include <QFontMetricsF>

using namespace Qt::StringLiterals;

namespace {

bool isText(const QQuickItem &item)
{
    return item.inherits("QQuickText") || item.inherits("QQuickTextInput") || item.inherits("QQuickTextEdit");
}

/// Where the letters go, in the item. A field's text may be longer than the field, which then scrolls it.
QRectF paintedRect(const QQuickItem &item)
{
    const auto number = [&](const char *name) { return item.property(name).toReal(); };
    const bool isPlain = item.inherits("QQuickText");
    const QSizeF size(number(isPlain ? "paintedWidth" : "contentWidth"),
                      number(isPlain ? "paintedHeight" : "contentHeight"));
    const QRectF room = QRectF(0, 0, item.width(), item.height())
                            .adjusted(number("leftPadding"), number("topPadding"), -number("rightPadding"),
                                      -number("bottomPadding"));
    QRectF painted(room.topLeft(), size);
    const auto horizontal = item.property("effectiveHorizontalAlignment").toInt();
    const auto vertical = item.property("verticalAlignment").toInt();
    if (horizontal & Qt::AlignRight)
        painted.moveRight(room.right());
    else if (horizontal & Qt::AlignHCenter)
        painted.moveLeft(room.center().x() - size.width() / 2);
    if (vertical & Qt::AlignBottom)
        painted.moveBottom(room.bottom());
    else if (vertical & Qt::AlignVCenter)
        painted.moveTop(room.center().y() - size.height() / 2);
    return painted;
}

/// The same, but from the top of the first line's letters to the bottom of the last line's: a line's own
/// height has room above and below that may lie anywhere.
QRectF inkedRect(const QQuickItem &item)
{
    auto inked = paintedRect(item);
    if (!item.inherits("QQuickText"))
        return inked;
    const QFontMetricsF metrics(item.property("font").value<QFont>());
    const auto letters = metrics.tightBoundingRect(item.property("text").toString().simplified());
    const auto lines = std::max(item.property("lineCount").toInt(), 1);
    constexpr int fixedHeight = 1; // Text.FixedHeight
    const auto given = item.property("lineHeight").toReal();
    const bool isFixed = item.property("lineHeightMode").toInt() == fixedHeight;
    const auto line = isFixed ? given : given * metrics.lineSpacing();
    inked.setTop(item.baselineOffset() + letters.top());
    inked.setBottom(item.baselineOffset() + (lines - 1) * line + letters.bottom());
    return inked;
}

double opacityOf(const QQuickItem &item)
{
    double opacity = 1;
    for (const auto *each = &item; each; each = each->parentItem())
        opacity *= each->opacity();
    return opacity;
}

QString placeOf(const QQuickItem &item)
{
    static const QStringList textStyles{u"BaseText"_s,     u"CalloutText"_s,     u"CaptionText"_s,
                                        u"HeadlineText"_s, u"PageTitleText"_s,   u"Title2Text"_s,
                                        u"Title3Text"_s,   u"WelcomeTitleText"_s};
    QStringList place;
    for (const auto *each = &item; each; each = each->parentItem()) {
        const auto name = viewNameOf(*each);
        if (!name.isEmpty() && !name.startsWith(u"QQuick"_s) && !textStyles.contains(name))
            place.prepend(name);
    }
    return place.join(u'/');
}

WindowText describe(QQuickItem &item)
{
    WindowText text;
    text.item = &item;
    text.text = item.property("text").toString();
    text.place = placeOf(item);
    text.font = item.property("font").value<QFont>();
    text.color = item.property("color").value<QColor>();
    text.color.setAlphaF(float(text.color.alphaF() * opacityOf(item)));
    text.painted = item.mapRectToScene(inkedRect(item));
    text.seen = text.painted & clipAround(item);
    if (item.clip())
        text.seen &= item.mapRectToScene(item.clipRect());
    text.enabled = item.isEnabled();
    return text;
}

void collect(QQuickItem &item, Sight sight, QList<WindowText> &found)
{
    if (!item.isVisible() || item.opacity() <= 0)
        return;
    if (isText(item) && !item.property("text").toString().trimmed().isEmpty()) {
        const auto text = describe(item);
        if (text.color.alphaF() > 0 && (sight == Sight::All || !text.seen.isEmpty()))
            found.append(text);
    }
    const auto children = item.childItems();
    for (auto *child : children)
        collect(*child, sight, found);
}

} // namespace

QList<WindowText> windowTexts(QQuickItem &root, Sight sight)
{
    QList<WindowText> found;
    collect(root, sight, found);
    return found;
}

QString viewNameOf(const QQuickItem &item)
{
    const auto name = QString::fromLatin1(item.metaObject()->className());
    const auto end = name.indexOf(u"_QML"_s);
    return end > 0 ? name.left(end) : QString();
}

QRectF clipAround(const QQuickItem &item)
{
    QRectF clip(0, 0, 1e9, 1e9);
    const QQuickItem *top = &item;
    for (const auto *each = item.parentItem(); each; each = each->parentItem()) {
        if (each->clip())
            clip &= each->mapRectToScene(each->clipRect());
        top = each;
    }
    return clip & QRectF(0, 0, top->width(), top->height());
}
