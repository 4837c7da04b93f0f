#include "SurfacePlate.h"

#include <QHash>
#include <QMatrix4x4>
#include <QQuickWindow>
#include <QSGClipNode>
#include <QSGRendererInterface>
#include <QSGTransformNode>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

/// How long nothing has changed before the shapes are drawn together: longer than the pause between two steps
/// of a wheel, shorter than a second of the clock.
constexpr auto restAfter = 250ms;

struct Scene
{
    SurfacePlate *plate = nullptr;
    std::vector<SurfaceItem *> shapes;
};

/// Of the interface thread, which waits while a shape that is drawn looks here too.
QHash<const QQuickWindow *, Scene> &scenes()
{
    static QHash<const QQuickWindow *, Scene> all;
    return all;
}

/// What of an item is to be seen, where an item over it clips.
std::optional<QRectF> clipOf(const QQuickItem &item, const QQuickItem &plate)
{
    std::optional<QRectF> clip;
    for (const auto *over = item.parentItem(); over; over = over->parentItem()) {
        if (!over->clip())
            continue;
        const auto rect = over->mapRectToItem(&plate, over->clipRect());
        clip = clip ? clip->intersected(rect) : rect;
    }
    return clip;
}

/// All shapes under `item` that can be seen, in the order in which they are painted.
void collect(const QQuickItem &item, std::vector<const SurfaceItem *> &found)
{
    if (!item.isVisible() || item.opacity() <= 0)
        return;
    if (const auto *shape = qobject_cast<const SurfaceItem *>(&item))
        found.push_back(shape);
    auto children = item.childItems();
    std::stable_sort(children.begin(), children.end(),
                     [](const auto *left, const auto *right) { return left->z() < right->z(); });
    for (const auto *child : std::as_const(children))
        collect(*child, found);
}

QSGNode *clipped(const QRectF &rect)
{
    auto *node = new QSGClipNode;
    auto *geometry = new QSGGeometry(QSGGeometry::defaultAttributes_Point2D(), 4);
    QSGGeometry::updateRectGeometry(geometry, rect);
    node->setGeometry(geometry);
    node->setFlag(QSGNode::OwnsGeometry);
    node->setIsRectangular(true);
    node->setClipRect(rect);
    return node;
}

} // namespace

SurfacePlate::SurfacePlate(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    m_rest.setSingleShot(true);
    m_rest.setInterval(restAfter);
    connect(&m_rest, &QTimer::timeout, this, [this] { setDrawing(true); });
}

SurfacePlate::~SurfacePlate()
{
    moveTo(nullptr);
}

bool SurfacePlate::draws(const QQuickWindow *window)
{
    const auto scene = scenes().constFind(window);
    return scene != scenes().constEnd() && scene->plate && scene->plate->m_drawing;
}

void SurfacePlate::join(SurfaceItem *shape)
{
    scenes()[shape->window()].shapes.push_back(shape);
}

void SurfacePlate::leave(SurfaceItem *shape)
{
    for (auto scene = scenes().begin(); scene != scenes().end();) {
        std::erase(scene->shapes, shape);
        scene = scene->shapes.empty() && !scene->plate ? scenes().erase(scene) : std::next(scene);
    }
}

void SurfacePlate::moveTo(QQuickWindow *window)
{
    if (m_window == window)
        return;
    setDrawing(false);
    m_rest.stop();
    for (auto scene = scenes().begin(); scene != scenes().end();) {
        if (scene->plate == this)
            scene->plate = nullptr;
        scene = scene->shapes.empty() && !scene->plate ? scenes().erase(scene) : std::next(scene);
    }
    if (m_window)
        disconnect(m_window, nullptr, this, nullptr);
    m_window = window;
    if (!window)
        return;
    scenes()[window].plate = this;
    connect(window, &QQuickWindow::afterAnimating, this, &SurfacePlate::look);
}

void SurfacePlate::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemSceneChange)
        moveTo(value.window);
    QQuickItem::itemChange(change, value);
}

std::optional<SurfacePlate::Place> SurfacePlate::placeOf(const SurfaceItem &shape)
{
    if (!shape.isVisible() || shape.width() <= 0 || shape.height() <= 0)
        return std::nullopt;
    Place place{&shape,
                {shape.style(), shape.size(), m_window->effectiveDevicePixelRatio()},
                shape.itemTransform(this, nullptr),
                {}};
    const auto &[first, second] = std::pair(place.look.style.first, place.look.style.second);
    const auto margin = 4 * std::max(first.sigma, second.sigma) +
                        std::max(first.offset.manhattanLength(), second.offset.manhattanLength());
    const auto reach = QRectF(QPointF(), shape.size()).adjusted(-margin, -margin, margin, margin);
    const auto seen = place.toPlate.mapRect(reach);
    if (!seen.intersects(QRectF(QPointF(), size())))
        return std::nullopt;
    place.clip = clipOf(shape, *this);
    return place;
}

std::vector<SurfacePlate::Place> SurfacePlate::places()
{
    std::vector<Place> places;
    const auto scene = scenes().constFind(m_window);
    if (scene == scenes().constEnd())
        return places;
    for (const auto *shape : scene->shapes) {
        if (const auto place = placeOf(*shape))
            places.push_back(*place);
    }
    return places;
}

void SurfacePlate::look()
{
    if (m_window->rendererInterface()->graphicsApi() == QSGRendererInterface::Software)
        return;
    auto now = places();
    if (now == m_places)
        return;
    m_places = std::move(now);
    setDrawing(false);
    m_rest.start();
}

void SurfacePlate::setDrawing(bool drawing)
{
    if (m_drawing == drawing)
        return;
    m_drawing = drawing;
    update();
    const auto scene = scenes().constFind(m_window);
    if (scene == scenes().constEnd())
        return;
    for (auto *shape : scene->shapes)
        shape->update();
}

QSGNode *SurfacePlate::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    delete old;
    if (!m_drawing)
        return nullptr;
    std::vector<const SurfaceItem *> painted;
    collect(*m_window->contentItem(), painted);
    auto *all = new QSGNode;
    for (const auto *one : painted) {
        const auto found = std::find_if(m_places.begin(), m_places.end(),
                                        [one](const Place &place) { return place.shape == one; });
        if (found == m_places.end())
            continue;
        const auto &place = *found;
        QSGNode *parent = all;
        if (place.clip) {
            parent = clipped(*place.clip);
            all->appendChildNode(parent);
        }
        auto *moved = new QSGTransformNode;
        moved->setMatrix(QMatrix4x4(place.toPlate));
        parent->appendChildNode(moved);
        auto *shape = makeTriangleNode();
        shape->show(place.look, *window());
        moved->appendChildNode(shape);
    }
    return all;
}
