#include "BackgroundItem.h"

#include "drawBackground.h"

#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGImageNode>
#include <QSGMaterial>
#include <QSGMaterialShader>
#include <QSGRendererInterface>

#include <array>
#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr qreal meshOfTheNet = 48; // logical pixels; the lights are linear in between

struct Knot
{
    float x, y;
    float red, green, blue;
};

const QSGGeometry::AttributeSet &knots()
{
    static const std::array attributes{QSGGeometry::Attribute::createWithAttributeType(
                                           0, 2, QSGGeometry::FloatType, QSGGeometry::PositionAttribute),
                                       QSGGeometry::Attribute::createWithAttributeType(
                                           1, 3, QSGGeometry::FloatType, QSGGeometry::ColorAttribute)};
    static const QSGGeometry::AttributeSet set{int(attributes.size()), sizeof(Knot), attributes.data()};
    return set;
}

class BackgroundShader : public QSGMaterialShader
{
public:
    BackgroundShader()
    {
        setShaderFileName(VertexStage, u":/quorvel/shaders/background.vert.qsb"_s);
        setShaderFileName(FragmentStage, u":/quorvel/shaders/background.frag.qsb"_s);
    }

    bool updateUniformData(RenderState &state, QSGMaterial *, QSGMaterial *) override
    {
        auto *bytes = state.uniformData()->data();
        bool changed = false;
        if (state.isMatrixDirty()) {
            std::memcpy(bytes, state.combinedMatrix().constData(), 64);
            changed = true;
        }
        if (state.isOpacityDirty()) {
            const auto opacity = state.opacity();
            std::memcpy(bytes + 64, &opacity, sizeof opacity);
            changed = true;
        }
        return changed;
    }
};

class BackgroundMaterial : public QSGMaterial
{
public:
    QSGMaterialType *type() const override
    {
        static QSGMaterialType type;
        return &type;
    }
    QSGMaterialShader *createShader(QSGRendererInterface::RenderMode) const override
    {
        return new BackgroundShader;
    }
    int compare(const QSGMaterial *) const override { return 0; }
};

void fillNet(QSizeF size, QSGGeometry &geometry)
{
    const auto columns = int(std::ceil(size.width() / meshOfTheNet));
    const auto rows = int(std::ceil(size.height() / meshOfTheNet));
    geometry.allocate((columns + 1) * (rows + 1), columns * rows * 6);
    auto *knot = static_cast<Knot *>(geometry.vertexData());
    for (int row = 0; row <= rows; ++row) {
        for (int column = 0; column <= columns; ++column) {
            const QPointF place(size.width() * column / columns, size.height() * row / rows);
            const auto color = backgroundAt(place, size);
            *knot++ = {float(place.x()), float(place.y()), color.x(), color.y(), color.z()};
        }
    }
    auto *index = geometry.indexDataAsUInt();
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const auto corner = quint32(row * (columns + 1) + column);
            const auto below = corner + quint32(columns) + 1;
            for (const auto end : {corner, corner + 1, below, below, corner + 1, below + 1})
                *index++ = end;
        }
    }
}

QSGNode *showNet(QSGNode *old, QSizeF size)
{
    auto *node = static_cast<QSGGeometryNode *>(old);
    if (!node) {
        node = new QSGGeometryNode;
        node->setGeometry(new QSGGeometry(knots(), 0, 0, QSGGeometry::UnsignedIntType));
        node->geometry()->setDrawingMode(QSGGeometry::DrawTriangles);
        node->setMaterial(new BackgroundMaterial);
        node->setFlags(QSGNode::OwnsGeometry | QSGNode::OwnsMaterial);
    }
    fillNet(size, *node->geometry());
    node->markDirty(QSGNode::DirtyGeometry);
    return node;
}

QSGNode *showPicture(QSGNode *old, QSizeF size, QQuickWindow &window)
{
    auto *node = static_cast<QSGImageNode *>(old);
    if (!node) {
        node = window.createImageNode();
        node->setOwnsTexture(true);
    }
    const auto picture = drawBackground(size, window.effectiveDevicePixelRatio());
    node->setTexture(window.createTextureFromImage(picture, QQuickWindow::TextureIsOpaque));
    node->setRect(QRectF(QPointF(), picture.size().toSizeF() / window.effectiveDevicePixelRatio()));
    return node;
}

} // namespace

BackgroundItem::BackgroundItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

QSGNode *BackgroundItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    if (width() <= 0 || height() <= 0) {
        delete old;
        return nullptr;
    }
    if (window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software)
        return showPicture(old, size(), *window());
    return showNet(old, size());
}

void BackgroundItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

void BackgroundItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemDevicePixelRatioHasChanged)
        update();
    QQuickItem::itemChange(change, value);
}
