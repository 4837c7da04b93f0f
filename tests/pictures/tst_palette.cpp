// The colours that are drawn are the palette's: the numbers stand here again, and what comes of laying them
// over each other is computed and looked for in the pixels.
#include "PreviewWindow.h"
#include "windowTest.h"
#include "windowTexts.h"

#include <array>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// Components from 0 to 1, not multiplied by the opacity.
struct Paint
{
    double red;
    double green;
    double blue;
    double opacity = 1;

    Paint at(double factor) const { return {red, green, blue, opacity * factor}; }
};

constexpr Paint bgTop{0.035, 0.041, 0.07};
constexpr Paint bgMiddle{0.02, 0.018, 0.04};
constexpr Paint bgBottom{0.005, 0.009, 0.02};
constexpr Paint neonPurple{0.63, 0.33, 1};
constexpr Paint neonGreen{0.27, 1, 0.56};
constexpr Paint lightGreen{0.58, 1, 0.76};
constexpr Paint glassFill{1, 1, 1, 0.07};
constexpr Paint glassStroke{1, 1, 1, 0.18};
constexpr Paint textPrimary{1, 1, 1, 0.94};
constexpr Paint textMuted{1, 1, 1, 0.58};
constexpr Paint black{0, 0, 0};
constexpr Paint white{1, 1, 1};
constexpr Paint clear{0, 0, 0, 0};
constexpr Paint red{1, 105 / 255.0, 97 / 255.0};
constexpr Paint panelMaterial{36 / 255.0, 35 / 255.0, 46 / 255.0, 0.46};
constexpr Paint sidebarMaterial{34 / 255.0, 32 / 255.0, 44 / 255.0, 0.34};

/// What rounding, the dither and the driver may change of a channel, of 255.
constexpr double tolerance = 2;

constexpr QSize usual(1180, 820);

/// `top` on something opaque.
Paint over(const Paint &top, const Paint &below)
{
    const auto mixed = [&](double above, double under) {
        return above * top.opacity + under * (1 - top.opacity);
    };
    return {mixed(top.red, below.red), mixed(top.green, below.green), mixed(top.blue, below.blue)};
}

/// Between two paints; a clear one takes no part in the colour.
Paint between(const Paint &from, const Paint &to, double part)
{
    const double opacity = std::lerp(from.opacity, to.opacity, part);
    if (opacity <= 0)
        return clear;
    const auto mixed = [&](double first, double second) {
        return std::lerp(first * from.opacity, second * to.opacity, part) / opacity;
    };
    return {mixed(from.red, to.red), mixed(from.green, to.green), mixed(from.blue, to.blue), opacity};
}

/// A gradient of three colours from the top left to the bottom right corner of a rectangle.
Paint diagonal(const std::array<Paint, 3> &stops, const QRectF &rect, QPointF point)
{
    const QPointF size(rect.width(), rect.height());
    const double part = QPointF::dotProduct(point - rect.topLeft(), size) / QPointF::dotProduct(size, size);
    return part < 0.5 ? between(stops[0], stops[1], part * 2) : between(stops[1], stops[2], part * 2 - 1);
}

/// How much there is of a light around a corner.
double glow(QPointF point, QPointF corner, double fullUntil, double goneFrom)
{
    const double distance = std::hypot(point.x() - corner.x(), point.y() - corner.y());
    return std::clamp(1 - (distance - fullUntil) / (goneFrom - fullUntil), 0.0, 1.0);
}

Paint background(QPointF point)
{
    const QRectF window(QPointF(), usual);
    auto color = diagonal({bgTop, bgMiddle, bgBottom}, window, point);
    color = over(neonPurple.at(0.34 * glow(point, window.topLeft(), 30, 520)), color);
    color = over(neonGreen.at(0.2 * glow(point, window.bottomRight(), 40, 600)), color);
    return over(black.at(0.22 * point.y() / window.height()), color);
}

/// A panel's fill over what lies under it.
Paint panel(const QRectF &rect, QPointF point)
{
    const auto tint = diagonal({neonPurple.at(0.1), neonGreen.at(0.045), clear}, rect, point);
    return over(tint, over(panelMaterial, background(point)));
}

QString describe(const Paint &paint)
{
    return u"%1 %2 %3"_s.arg(paint.red * 255, 0, 'f', 1)
        .arg(paint.green * 255, 0, 'f', 1)
        .arg(paint.blue * 255, 0, 'f', 1);
}

bool isDrawn(const QColor &drawn, const Paint &expected)
{
    return std::abs(drawn.red() - expected.red * 255) <= tolerance &&
           std::abs(drawn.green() - expected.green * 255) <= tolerance &&
           std::abs(drawn.blue() - expected.blue * 255) <= tolerance;
}

/// The first item that a QML file of that name has made.
QQuickItem *viewNamed(QQuickItem &item, const QString &name)
{
    if (!item.isVisible())
        return nullptr;
    if (viewNameOf(item) == name)
        return &item;
    const auto children = item.childItems();
    for (auto *child : children) {
        if (auto *found = viewNamed(*child, name))
            return found;
    }
    return nullptr;
}

QRectF placeOf(const QQuickItem &item)
{
    return item.mapRectToScene(QRectF(QPointF(), item.size()));
}

/// The middle of the pixel that holds a point.
QPointF pixelMiddle(QPointF point)
{
    return {std::floor(point.x()) + 0.5, std::floor(point.y()) + 0.5};
}

} // namespace

#define COMPARE_PIXEL(picture, point, expected)                                                              \
    do {                                                                                                     \
        const QColor drawn = (picture).pixelColor(int((point).x()), int((point).y()));                       \
        const auto message = u"at %1,%2 there is %3 %4 %5 instead of "_s.arg((point).x())                    \
                                 .arg((point).y())                                                           \
                                 .arg(drawn.red())                                                           \
                                 .arg(drawn.green())                                                         \
                                 .arg(drawn.blue()) +                                                        \
                             describe(expected);                                                             \
        QVERIFY2(isDrawn(drawn, expected), qPrintable(message));                                             \
    } while (false)

class tst_palette : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<PreviewScene> m_scene;
    std::unique_ptr<PreviewWindow> m_window;
    QImage m_picture;

    void show(PreviewState state, ProductSection section = ProductSection::Focus)
    {
        m_window.reset();
        m_scene = std::make_unique<PreviewScene>(state, PreviewDesktop::Whole, AppLanguage::English);
        m_scene->standStill();
        m_window = std::make_unique<PreviewWindow>(*m_scene, section, usual);
        const auto drawn = m_window->grab();
        QVERIFY(drawn.ok());
        m_picture = drawn.value();
    }

    QQuickItem &view(const QString &name) const { return *viewNamed(m_window->content(), name); }
    QRectF hero() const { return placeOf(*viewNamed(view(u"FocusHero"_s), u"PanelSurface"_s)); }
    QRectF control(const QString &name) const { return placeOf(*controlNamed(m_window->view(), name)); }

    /// How many pixels have the colour that letters of `color` have in the midst of a stroke.
    int strokePixels(const QString &text, const Paint &color) const
    {
        const auto texts = windowTexts(m_window->content());
        const auto found = std::find_if(texts.begin(), texts.end(), [&](const WindowText &each) {
            return each.text == text && each.font.pixelSize() >= 36;
        });
        if (found == texts.end())
            return 0;
        found->item->setOpacity(0);
        const auto without = m_window->grab();
        found->item->setOpacity(1);
        const auto place = found->painted.toAlignedRect();
        int pixels = 0;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                const QColor below = without.value().pixelColor(x, y);
                const Paint under{double(below.redF()), double(below.greenF()), double(below.blueF())};
                pixels += isDrawn(m_picture.pixelColor(x, y), over(color, under)) ? 1 : 0;
            }
        }
        return pixels;
    }

private Q_SLOTS:
    void theBackgroundHasItsFourLayers()
    {
        show(PreviewState::SignIn);
        // Within the full part of each glow, on the way out, and where there is none.
        for (const QPointF point : {QPointF(3.5, 3.5), QPointF(1176.5, 816.5), QPointF(300.5, 100.5),
                                    QPointF(20.5, 400.5), QPointF(1178.5, 480.5), QPointF(900.5, 810.5),
                                    QPointF(590.5, 40.5), QPointF(20.5, 800.5), QPointF(1170.5, 10.5)})
            COMPARE_PIXEL(m_picture, point, background(point));
    }

    void theSidebarHasItsMaterialAndItsRule()
    {
        show(PreviewState::Ready);
        const QPointF inside(10.5, 500.5);
        COMPARE_PIXEL(m_picture, inside, over(sidebarMaterial, background(inside)));
        const QPointF edge(275.5, 500.5);
        COMPARE_PIXEL(m_picture, edge, over(glassStroke.at(0.45), over(sidebarMaterial, background(edge))));
    }

    void aPanelHasItsFillAndItsOutline()
    {
        show(PreviewState::Ready);
        const auto rect = hero();
        for (const QPointF part : {QPointF(0.97, 0.08), QPointF(0.6, 0.3), QPointF(0.01, 0.5)}) {
            const auto point =
                pixelMiddle(rect.topLeft() + QPointF(rect.width() * part.x(), rect.height() * part.y()));
            COMPARE_PIXEL(m_picture, point, panel(rect, point));
        }
        for (const QPointF edge :
             {QPointF(rect.left(), rect.center().y()), QPointF(rect.right() - 1, rect.center().y()),
              QPointF(rect.center().x(), rect.top())}) {
            const auto point = pixelMiddle(edge);
            COMPARE_PIXEL(m_picture, point, over(glassStroke.at(0.78), panel(rect, point)));
        }
    }

    void aGlassButtonHasItsFillAndItsOutline()
    {
        show(PreviewState::Ready);
        const auto rect = control(u"Manual Lock"_s);
        const auto inside = pixelMiddle({rect.left() + 6, rect.center().y()});
        COMPARE_PIXEL(m_picture, inside, over(glassFill, background(inside)));
        const auto edge = pixelMiddle({rect.left() + 30, rect.top()});
        COMPARE_PIXEL(m_picture, edge, over(glassStroke.at(0.65), over(glassFill, background(edge))));
    }

    void anInputHasItsFillAndItsOutline()
    {
        show(PreviewState::Ready);
        const auto rect = control(u"Current topic"_s);
        const auto inside = pixelMiddle({rect.right() - 40, rect.center().y()});
        COMPARE_PIXEL(m_picture, inside, over(glassFill, panel(hero(), inside)));
        const auto edge = pixelMiddle({rect.right() - 40, rect.bottom() - 1});
        COMPARE_PIXEL(m_picture, edge, over(glassStroke.at(0.62), over(glassFill, panel(hero(), edge))));
    }

    void thePrimaryButtonGoesFromGreenToLightGreen()
    {
        show(PreviewState::Ready);
        const auto rect = control(u"Start Study"_s);
        const std::array stops{neonGreen, between(neonGreen, lightGreen, 0.5), lightGreen};
        for (const double x : {rect.left() + 6, rect.left() + 12, rect.right() - 12, rect.right() - 6}) {
            const auto point = pixelMiddle({x, rect.center().y()});
            COMPARE_PIXEL(m_picture, point, diagonal(stops, rect, point));
        }
        const auto edge = pixelMiddle({rect.center().x(), rect.top()});
        COMPARE_PIXEL(m_picture, edge, over(white.at(0.42), diagonal(stops, rect, edge)));
    }

    void theBarHasTheAccentOfTheMode()
    {
        show(PreviewState::Studying);
        const auto studying = placeOf(*viewNamed(view(u"FocusHero"_s), u"SessionBar"_s));
        COMPARE_PIXEL(m_picture, pixelMiddle({studying.left() + 30, studying.center().y()}), neonPurple);
        show(PreviewState::Break);
        const auto inBreak = placeOf(*viewNamed(view(u"FocusHero"_s), u"SessionBar"_s));
        COMPARE_PIXEL(m_picture, pixelMiddle({inBreak.left() + 20, inBreak.center().y()}), neonGreen);
    }

    void theClockHasTheAccentOfTheMode()
    {
        constexpr int strokes = 200; // the strokes of a figure of this size have many times as many
        show(PreviewState::Studying);
        QVERIFY(strokePixels(u"8"_s, neonPurple) > strokes);
        QVERIFY(strokePixels(u"8"_s, neonGreen) == 0);
        show(PreviewState::Break);
        QVERIFY(strokePixels(u"3"_s, neonGreen) > strokes);
        show(PreviewState::Locked);
        QVERIFY(strokePixels(u"5"_s, red) > strokes);
        show(PreviewState::Ready);
        QVERIFY(strokePixels(u"5"_s, textMuted) > strokes);
        QVERIFY(strokePixels(u"Focus"_s, textPrimary) > strokes);
    }
};

int main(int argc, char **argv)
{
    return runWindowTest<tst_palette>(argc, argv);
}

#include "tst_palette.moc"
