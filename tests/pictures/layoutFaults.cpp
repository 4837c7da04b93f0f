#include "layoutFaults.h"

#include "windowTexts.h"

using namespace Qt::StringLiterals;

namespace {

/// Logical pixels that positions between two physical pixels may differ by.
constexpr double rounding = 1;

/// Something in the window that may not be cut off, nor lie upon another.
struct Thing
{
    QQuickItem *item;
    QRectF rect; ///< in the window
    QString name;
    bool scrollsItself;                   ///< a field, whose text may be longer than itself
    const QQuickItem *scroller = nullptr; ///< the nearest that it is in
    QRectF seen = {};                     ///< what is left of rect in sight
};

QString rectText(const QRectF &rect)
{
    return u"%1,%2 %3x%4"_s.arg(rect.x(), 0, 'f', 1)
        .arg(rect.y(), 0, 'f', 1)
        .arg(rect.width(), 0, 'f', 1)
        .arg(rect.height(), 0, 'f', 1);
}

bool contains(const QRectF &outer, const QRectF &inner)
{
    return outer.adjusted(-rounding, -rounding, rounding, rounding).contains(inner);
}

bool isControl(const QQuickItem &item)
{
    return item.inherits("QQuickAbstractButton") || item.inherits("QQuickTextInput") ||
           item.inherits("QQuickTextEdit");
}

bool isAncestor(const QQuickItem *above, const QQuickItem *below)
{
    return above->isAncestorOf(below);
}

/// Whether the item scrolls what is in it, up and down.
bool isScroller(const QQuickItem &item)
{
    return item.inherits("QQuickFlickable");
}

/// A panel, a tile, a row, a button: what has a surface of its own size, which holds what is in it.
bool isFrame(const QQuickItem &item)
{
    const auto children = item.childItems();
    return std::any_of(children.begin(), children.end(), [&](const QQuickItem *child) {
        return child->isVisible() && viewNameOf(*child).endsWith(u"Surface"_s) &&
               child->size() == item.size() && child->position().isNull();
    });
}

Thing placed(Thing thing)
{
    thing.seen = thing.rect & clipAround(*thing.item);
    for (const auto *around = thing.item->parentItem(); around && !thing.scroller;
         around = around->parentItem()) {
        if (isScroller(*around))
            thing.scroller = around;
    }
    return thing;
}

void collectControls(QQuickItem &item, QList<Thing> &found)
{
    if (!item.isVisible())
        return;
    if (isControl(item)) {
        const auto name = item.property("text").toString();
        found.append(placed({&item, item.mapRectToScene(QRectF(QPointF(), item.size())),
                             u"control \"%1\" (%2)"_s.arg(name.left(40), viewNameOf(item)), true}));
    }
    const auto children = item.childItems();
    for (auto *child : children)
        collectControls(*child, found);
}

QList<Thing> textThings(const QQuickView &window)
{
    QList<Thing> things;
    const auto texts = windowTexts(*window.rootObject(), Sight::All);
    for (const auto &text : texts) {
        const bool isField = !text.item->inherits("QQuickText");
        const auto rect =
            isField ? text.item->mapRectToScene(QRectF(QPointF(), text.item->size())) : text.painted;
        things.append(
            placed({text.item, rect, u"text \"%1\" (%2)"_s.arg(text.text.left(40).simplified(), text.place),
                    isField}));
    }
    return things;
}

/// Cut off by its own size.
void checkWholeness(const Thing &text, QStringList &faults)
{
    const auto &item = *text.item;
    if (item.property("truncated").toBool())
        faults.append(text.name + u" is elided"_s);
    const auto own = item.mapRectToScene(QRectF(QPointF(), item.size()));
    if (!text.scrollsItself && !contains(own, text.rect))
        faults.append(
            u"%1 is larger than its item: %2 in %3"_s.arg(text.name, rectText(text.rect), rectText(own)));
}

/// Beyond what is around it.
void checkSurroundings(const Thing &thing, const QSizeF &window, QStringList &faults)
{
    bool scrolls = false;
    for (const auto *around = thing.item->parentItem(); around; around = around->parentItem()) {
        auto room = around->mapRectToScene(QRectF(QPointF(), around->size()));
        scrolls = scrolls || isScroller(*around);
        if (scrolls) { // up and down it may be anywhere
            room.setTop(-1e9);
            room.setBottom(1e9);
        }
        if ((around->clip() || isFrame(*around)) && !contains(room, thing.rect)) {
            faults.append(u"%1 leaves %2: %3 in %4"_s.arg(thing.name, viewNameOf(*around),
                                                          rectText(thing.rect), rectText(room)));
            return;
        }
    }
    const QRectF room(0, scrolls ? -1e9 : 0, window.width(), scrolls ? 2e9 : window.height());
    if (!contains(room, thing.rect))
        faults.append(u"%1 leaves the window: %2"_s.arg(thing.name, rectText(thing.rect)));
}

/// A frame that is wider or taller than the one around it.
void checkFrames(QQuickItem &item, QStringList &faults)
{
    if (!item.isVisible())
        return;
    if (isFrame(item)) {
        const auto own = item.mapRectToScene(QRectF(QPointF(), item.size()));
        for (const auto *around = item.parentItem(); around; around = around->parentItem()) {
            const auto room = around->mapRectToScene(QRectF(QPointF(), around->size()));
            if (isScroller(*around))
                break;
            if (isFrame(*around) && !contains(room, own))
                faults.append(u"%1 leaves %2: %3 in %4"_s.arg(viewNameOf(item), viewNameOf(*around),
                                                              rectText(own), rectText(room)));
        }
    }
    const auto children = item.childItems();
    for (auto *child : children)
        checkFrames(*child, faults);
}

void checkScrollers(QQuickItem &item, QStringList &faults)
{
    if (!item.isVisible())
        return;
    if (isScroller(item) && item.property("contentWidth").toReal() > item.width() + rounding)
        faults.append(u"%1 is wider than its place"_s.arg(viewNameOf(item)));
    const auto children = item.childItems();
    for (auto *child : children)
        checkScrollers(*child, faults);
}

/// Things that scroll together overlap out of sight too; others only where both are seen.
bool overlap(const Thing &left, const Thing &right)
{
    const auto both = left.scroller == right.scroller ? left.rect & right.rect : left.seen & right.seen;
    return both.width() > rounding && both.height() > rounding && left.item != right.item &&
           !isAncestor(left.item, right.item) && !isAncestor(right.item, left.item);
}

void checkOverlaps(const QList<Thing> &things, QStringList &faults)
{
    for (qsizetype left = 0; left < things.size(); ++left) {
        for (qsizetype right = left + 1; right < things.size(); ++right) {
            if (overlap(things[left], things[right]))
                faults.append(u"%1 lies upon %2: %3 and %4"_s.arg(things[left].name, things[right].name,
                                                                  rectText(things[left].rect),
                                                                  rectText(things[right].rect)));
        }
    }
}

} // namespace

QStringList layoutFaults(const QQuickView &window)
{
    QStringList faults;
    const auto texts = textThings(window);
    QList<Thing> things = texts;
    collectControls(*window.rootObject(), things);
    for (const auto &text : texts)
        checkWholeness(text, faults);
    for (const auto &thing : things)
        checkSurroundings(thing, window.size(), faults);
    checkFrames(*window.rootObject(), faults);
    checkScrollers(*window.rootObject(), faults);
    checkOverlaps(things, faults);
    faults.removeDuplicates();
    return faults;
}
