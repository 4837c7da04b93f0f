// Shapes that rest are drawn together into one picture that is kept: nobody may see when.
#include "PreviewWindow.h"
#include "SurfacePlate.h"
#include "setUpInterface.h"
#include "windowTest.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickView>
#include <QSignalSpy>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usual(1180, 820);

/// A kept picture is drawn upside down, so that pixels on the very edge of a triangle fall to its other side:
/// so much of 255 may change, and of so few pixels.
constexpr int mostOfAChannel = 8;
constexpr double fewPixels = 0.001;
constexpr int rounding = 2; // of 255; may change anywhere

struct Difference
{
    int largest = 0; ///< of a channel, of 255
    double part = 0; ///< of all pixels, that differ by more than rounding

    bool isUnseen() const { return largest <= mostOfAChannel && part <= fewPixels; }
    QByteArray text() const
    {
        return QByteArray::number(largest) + " of 255, " + QByteArray::number(part * 100) + " % of pixels";
    }
};

Difference difference(const QImage &one, const QImage &other)
{
    Difference found;
    int changed = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const auto here = one.pixel(x, y);
            const auto there = other.pixel(x, y);
            const auto apart =
                std::max({std::abs(qRed(here) - qRed(there)), std::abs(qGreen(here) - qGreen(there)),
                          std::abs(qBlue(here) - qBlue(there))});
            found.largest = std::max(found.largest, apart);
            changed += apart > rounding ? 1 : 0;
        }
    }
    found.part = double(changed) / (double(one.width()) * one.height());
    return found;
}

/// The window while each shape draws itself, since one of them has just come back; nothing where it never was
/// so.
QImage picturedAlone(QQuickWindow &window)
{
    SurfaceItem *shape = nullptr;
    const auto shapes = window.contentItem()->findChildren<SurfaceItem *>();
    const QRectF inside(QPointF(), window.size());
    for (auto *each : shapes) {
        const auto place = each->mapRectToScene(QRectF(QPointF(), each->size()));
        if (each->isVisible() && !place.isEmpty() && inside.contains(place))
            shape = each;
    }
    if (!shape)
        return {};
    for (int attempt = 0; attempt < 10; ++attempt) { // a machine that is busy may rest in between
        shape->setVisible(false);
        const bool moved = QTest::qWaitFor([&window] { return !SurfacePlate::draws(&window); });
        shape->setVisible(true);
        const auto picture = window.grabWindow();
        if (moved && !SurfacePlate::draws(&window))
            return picture;
    }
    return {};
}

} // namespace

class tst_restingShapes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restingLooksTheSame_data()
    {
        QTest::addColumn<ProductSection>("section");
        QTest::addColumn<PreviewState>("state");
        QTest::addColumn<double>("scrolled");
        QTest::newRow("sign-in") << ProductSection::Focus << PreviewState::SignIn << 0.0;
        QTest::newRow("focus") << ProductSection::Focus << PreviewState::Studying << 0.0;
        QTest::newRow("focus, scrolled") << ProductSection::Focus << PreviewState::Studying << 333.0;
        QTest::newRow("cards, scrolled") << ProductSection::Cards << PreviewState::Studying << 500.0;
        QTest::newRow("settings") << ProductSection::Rules << PreviewState::Pro << 250.0;
    }
    void restingLooksTheSame()
    {
        QFETCH(ProductSection, section);
        QFETCH(PreviewState, state);
        QFETCH(double, scrolled);
        PreviewScene scene(state, PreviewDesktop::Mixed, AppLanguage::English);
        PreviewWindow window(scene, section, usual);
        scene.standStill();
        QVERIFY(window.scrollTo(scrolled).ok());
        auto *shown = window.content().window();
        const auto alone = picturedAlone(*shown);
        QVERIFY(!alone.isNull());
        QTRY_VERIFY(SurfacePlate::draws(shown));
        const auto resting = shown->grabWindow();
        QVERIFY(SurfacePlate::draws(shown));
        QCOMPARE(resting.size(), alone.size());
        const auto found = difference(alone, resting);
        QVERIFY2(found.isUnseen(), found.text().constData());
    }

    void aSecondOfASessionWakesNone()
    {
        PreviewScene scene(PreviewState::Studying, PreviewDesktop::Mixed, AppLanguage::English);
        PreviewWindow window(scene, ProductSection::Focus, usual);
        scene.standStill();
        QVERIFY(window.scrollTo(0).ok());
        auto *shown = window.content().window();
        QTRY_VERIFY(SurfacePlate::draws(shown));
        SurfaceItem *full = nullptr; // of the bar
        for (auto *shape : shown->contentItem()->findChildren<SurfaceItem *>()) {
            if (shape->isRestless() && shape->isVisible())
                full = shape;
        }
        QVERIFY(full);
        for (int second = 0; second < 3; ++second) {
            const auto width = full->width();
            scene.seconds(1);
            QTRY_VERIFY(full->width() > width);
            QSignalSpy frames(shown, &QQuickWindow::frameSwapped);
            shown->update();
            QVERIFY(frames.wait());
            QVERIFY(SurfacePlate::draws(shown));
        }
    }

    void aFillIsEven_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("radius");
        QTest::newRow("sidebar") << QSize(276, 640) << 0.0;
        QTest::newRow("row") << QSize(232, 38) << 18.0;
        QTest::newRow("panel") << QSize(844, 302) << 24.0;
        QTest::newRow("tile") << QSize(46, 46) << 18.0;
    }
    void aFillIsEven()
    {
        QFETCH(QSize, size);
        QFETCH(double, radius);
        QQuickView view;
        setUpInterface(*view.engine());
        view.setColor(Qt::black);
        QQmlComponent component(view.engine());
        component.setData("import Quorvel.Ui\nSurfaceItem { startColor: '#80ffffff'; outlineWidth: 0 }",
                          QUrl());
        auto *shape = qobject_cast<SurfaceItem *>(component.create());
        QVERIFY2(shape, qPrintable(component.errorString()));
        shape->setParentItem(view.contentItem());
        shape->setRadius(radius);
        shape->setSize(size);
        view.resize(size);
        view.show();
        const auto picture = view.grabWindow();
        QCOMPARE(picture.size(), size);
        const int edge = int(1.6 * radius) + 3; // beyond the corners
        const auto fill = qGray(picture.pixel(size.width() / 2 + 1, 3));
        QVERIFY(fill > 100);
        for (int y = 2; y < size.height() - 2; ++y) {
            const bool isInCorners = y < edge || y >= size.height() - edge;
            const int from = isInCorners ? std::min(edge, size.width() / 2) : 2;
            for (int x = from; x < size.width() - from; ++x)
                QCOMPARE(qGray(picture.pixel(x, y)), fill);
        }
    }

    void aChangedTextDisturbsNothing()
    {
        PreviewScene scene(PreviewState::Studying, PreviewDesktop::Mixed, AppLanguage::English);
        PreviewWindow window(scene, ProductSection::Focus, usual);
        scene.standStill();
        QVERIFY(window.settle().ok());
        auto *shown = window.content().window();
        QTRY_VERIFY(SurfacePlate::draws(shown));
        const auto before = shown->grabWindow();
        scene.controller().setCurrentStudyTopicText(u"Latin"_s);
        QVERIFY(difference(before, shown->grabWindow()).largest > 40);
        QVERIFY(SurfacePlate::draws(shown));
    }

    void aChangedShapeIsSeenAtOnce()
    {
        PreviewScene scene(PreviewState::Studying, PreviewDesktop::Mixed, AppLanguage::English);
        PreviewWindow window(scene, ProductSection::Focus, usual);
        scene.standStill();
        QVERIFY(window.settle().ok());
        auto *shown = window.content().window();
        QTRY_VERIFY(SurfacePlate::draws(shown));
        const auto before = shown->grabWindow();
        QVERIFY(window.focus(u"Current topic"_s).ok()); // gets a halo
        const auto after = shown->grabWindow();
        QVERIFY(difference(before, after).largest > 40);
        QTRY_VERIFY(SurfacePlate::draws(shown));
        const auto found = difference(after, shown->grabWindow());
        QVERIFY2(found.isUnseen(), found.text().constData());
    }
};

int main(int argc, char **argv)
{
    return runWindowTest<tst_restingShapes>(argc, argv);
}

#include "tst_restingShapes.moc"
