// The shape under the building blocks, pixel by pixel.
#include "drawBackground.h"
#include "drawSurface.h"
#include "suite.h"
#include "surfaceShape.h"

class tst_drawSurface : public QObject
{
    Q_OBJECT

private:
    static SurfaceStyle panel()
    {
        SurfaceStyle style;
        style.radius = 24;
        style.base = QColor::fromRgbF(36 / 255.f, 35 / 255.f, 46 / 255.f, 0.46f);
        style.start = QColor::fromRgbF(0.63f, 0.33f, 1, 0.1f);
        style.middle = QColor::fromRgbF(0.27f, 1, 0.56f, 0.045f);
        style.end = Qt::transparent;
        style.outline = QColor::fromRgbF(1, 1, 1, 0.18f * 0.78f);
        style.first = {QColor::fromRgbF(0, 0, 0, 0.28f).rgba(), 24, {0, 18}};
        return style;
    }

    static void compareNearly(int found, float wanted)
    {
        QVERIFY2(qAbs(float(found) - wanted * 255) <= 1,
                 qPrintable(QStringLiteral("%1 instead of %2").arg(found).arg(double(wanted) * 255)));
    }

private Q_SLOTS:
    void theCornerMeetsTheCircleAt45Degrees_data()
    {
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("side");
        QTest::newRow("panel") << 24.0 << 400.0;
        QTest::newRow("button") << 16.0 << 40.0;
        QTest::newRow("segment") << 9.0 << 26.0;
    }
    void theCornerMeetsTheCircleAt45Degrees()
    {
        QFETCH(double, radius);
        QFETCH(double, side);
        const SurfaceCorner corner(radius, side);
        QCOMPARE(corner.extent, std::min(1.528 * radius, side / 2));
        const auto inset = radius * 0.2929;
        const QPointF point(side / 2 - inset, side / 2 - inset);
        QVERIFY(qAbs(corner.distance(point, QSizeF(side, side) / 2)) < 0.01);
    }

    void theEdgeLiesOnTheShape()
    {
        const QSizeF size(300, 80);
        const SurfaceCorner corner(18, 80);
        const Edge edge(size, corner);
        for (const auto &point : edge.points)
            QVERIFY(qAbs(corner.distance(point.place - QPointF(150, 40), size / 2)) < 0.01);
        for (const auto middle : edge.middles) {
            const auto place = edge.points[middle].place;
            QCOMPARE(place.x() * 300 + place.y() * 80, (300.0 * 300 + 80 * 80) / 2);
        }
    }

    void aShadowLiesOutsideAlone()
    {
        SurfaceStyle style;
        style.outlineWidth = 0;
        style.first = {QColor(Qt::black).rgba(), 10, {0, 0}};
        const auto image = drawSurface(style, {100, 60}, 1);
        const auto margin = style.margin();
        QCOMPARE(image.size(), QSize(100 + 2 * margin, 60 + 2 * margin));
        QCOMPARE(qAlpha(image.pixel(margin + 50, margin)), 0);
        QCOMPARE(qAlpha(image.pixel(margin + 50, margin + 30)), 0);
        compareNearly(qAlpha(image.pixel(margin + 50, margin - 1)), 0.48f); // half a pixel out of the edge
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    }

    void theGradientFollowsTheDiagonal()
    {
        auto style = panel();
        style.first = {};
        const auto image = drawSurface(style, {400, 200}, 1);
        const auto margin = style.margin();
        for (const QPoint place :
             {QPoint(200, 100), QPoint(220, 60), QPoint(180, 140)}) { // all half way along
            const auto pixel = image.pixel(margin + place.x(), margin + place.y());
            compareNearly(qAlpha(pixel), 0.045f + 0.46f * 0.955f);
            compareNearly(qGreen(pixel), 0.045f + 35 / 255.f * 0.46f * 0.955f);
        }
    }

    void theOutlineIsInsideAndOnePixelWide_data()
    {
        QTest::addColumn<double>("scale");
        QTest::newRow("100 %") << 1.0;
        QTest::newRow("200 %") << 2.0;
        QTest::newRow("250 %") << 2.5;
    }
    void theOutlineIsInsideAndOnePixelWide()
    {
        QFETCH(double, scale);
        SurfaceStyle style;
        style.outline = Qt::white;
        const auto image = drawSurface(style, {200, 100}, scale);
        float width = 0;
        for (int row = 0; row < image.height() / 2; ++row)
            width += float(qAlpha(image.pixel(image.width() / 2, row))) / 255;
        QVERIFY2(qAbs(width - float(scale)) < 0.02f, qPrintable(QString::number(double(width))));
        const auto outside = int(style.margin() * scale) - 1;
        QCOMPARE(qAlpha(image.pixel(image.width() / 2, outside)), 0);
    }

    void theBackgroundGlowsInTwoCorners()
    {
        const auto image = drawBackground({1180, 820}, 1);
        QCOMPARE(image.size(), QSize(1180, 820));
        const auto near = [](QRgb pixel, float red, float green, float blue) {
            compareNearly(qRed(pixel), red);
            compareNearly(qGreen(pixel), green);
            compareNearly(qBlue(pixel), blue);
        };
        near(image.pixel(0, 0), 0.035f * 0.66f + 0.63f * 0.34f, 0.041f * 0.66f + 0.33f * 0.34f,
             0.07f * 0.66f + 0.34f);
        near(image.pixel(1179, 819), (0.005f * 0.8f + 0.27f * 0.2f) * 0.78f, (0.009f * 0.8f + 0.2f) * 0.78f,
             (0.02f * 0.8f + 0.56f * 0.2f) * 0.78f);
        near(image.pixel(590, 410), 0.02f * 0.89f, 0.018f * 0.89f, 0.04f * 0.89f); // beyond both
    }
};

QUORVEL_TEST(tst_drawSurface)
#include "tst_drawSurface.moc"
