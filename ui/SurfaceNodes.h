#pragma once

#include "SurfaceStyle.h"

#include <QSGNode>
#include <QSizeF>

class QQuickWindow;

/// All that decides how a shape is seen; `scale` is the number of the screen's pixels in a logical one.
struct SurfaceLook
{
    SurfaceStyle style;
    QSizeF size; ///< above 0 in both directions
    qreal scale = 1;

    bool operator==(const SurfaceLook &) const = default;
};

/// A shape in the scene graph, at 0, 0.
class SurfaceNode : public QSGNode
{
public:
    /// Does nothing where it shows that already.
    virtual void show(const SurfaceLook &look, QQuickWindow &window) = 0;
};

/// Of coloured triangles.
SurfaceNode *makeTriangleNode();

/// One picture, for the renderer that has no triangles.
SurfaceNode *makePictureNode();
