#pragma once

#include "SurfaceItem.h"
#include "SurfaceNodes.h"

#include <QPointer>
#include <QTimer>
#include <QTransform>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <vector>

class QQuickWindow;

/// Draws all shapes of its window in one place while none of them moves or changes, so that a layer can keep
/// the picture and a changed text costs no shape. It belongs under everything else, in an item that is a
/// layer and nothing but background. While anything of a shape changes, and shortly after, each shape draws
/// itself.
///
/// So nothing but the background may lie under a shape; what lies over shapes is free. Without a graphics
/// processor it draws nothing, and the shapes draw themselves.
class SurfacePlate : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit SurfacePlate(QQuickItem *parent = nullptr);
    ~SurfacePlate() override;

    /// Whether the shapes of that window are drawn by its plate now.
    static bool draws(const QQuickWindow *window);

    static void join(SurfaceItem *shape);
    static void leave(SurfaceItem *shape);

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    /// A shape as it is seen.
    struct Place
    {
        const SurfaceItem *shape = nullptr;
        SurfaceLook look;
        QTransform toPlate;
        std::optional<QRectF> clip; ///< in the plate's coordinates

        bool operator==(const Place &) const = default;
    };

    void moveTo(QQuickWindow *window);
    /// Before each frame: whether everything is still where it was.
    void look();
    void setDrawing(bool drawing);
    std::optional<Place> placeOf(const SurfaceItem &shape);
    std::vector<Place> places();

    QPointer<QQuickWindow> m_window;
    std::vector<Place> m_places; ///< all that can be seen, in the order in which they joined
    bool m_drawing = false;
    QTimer m_rest;
};
