// Without a graphics processor the window is plainer, but everything is there and can be read.
#include "QmlWarnings.h"
#include "contrast.h"
#include "windowTest.h"

#include <QProcess>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize usual(1180, 820);

/// Plainer surfaces may cost a text this much of what is wanted; the small words of the modes have no more
/// here than with a graphics processor.
constexpr double leastRatio = 3;

QStringList optionsOf(PreviewState state, ProductSection section, AppLanguage language)
{
    return {u"--state"_s,      nameOf(state),   u"--section"_s,
            rawValue(section), u"--language"_s, rawValue(language)};
}

/// A text without the time that an event begins with, which each process writes as its locale has it.
QString withoutTime(const QString &text)
{
    static const QRegularExpression time(u"^\\d+:\\d\\d:\\d\\d( [AP]M)? "_s);
    return QString(text).remove(time);
}

/// The texts that are in sight with OpenGL.
QStringList textsWithOpenGL(const QStringList &options)
{
    QProcess preview;
    preview.start(QStringLiteral(QUORVEL_PREVIEW), options + QStringList{u"--texts"_s});
    if (!preview.waitForFinished(60'000) || preview.exitCode() != 0)
        return {};
    QStringList texts;
    const auto lines = QString::fromUtf8(preview.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    for (const auto &line : lines)
        texts.append(withoutTime(line.section(u'\t', 0, 0)));
    return texts;
}

void collectImages(QQuickItem &item, QList<QRect> &found)
{
    if (!item.isVisible())
        return;
    const auto place = item.mapRectToScene(QRectF(QPointF(), item.size()));
    if (item.inherits("QQuickImage") && clipAround(item).contains(place))
        found.append(place.toAlignedRect());
    const auto children = item.childItems();
    for (auto *child : children)
        collectImages(*child, found);
}

/// Whether something is drawn within a rectangle, other than an even ground.
bool isDrawn(const QImage &picture, const QRect &rect)
{
    int darkest = 255;
    int lightest = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            darkest = std::min(darkest, qGray(picture.pixel(x, y)));
            lightest = std::max(lightest, qGray(picture.pixel(x, y)));
        }
    }
    return lightest - darkest > 40;
}

} // namespace

class tst_softwareRenderer : public QObject
{
    Q_OBJECT

private:
    QmlWarnings m_warnings;

private Q_SLOTS:
    void everythingIsThereAndCanBeRead_data()
    {
        QTest::addColumn<PreviewState>("state");
        QTest::addColumn<ProductSection>("section");
        QTest::addColumn<AppLanguage>("language");
        for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
            for (const auto section : allProductSections)
                QTest::newRow(qPrintable(rawValue(section) + u", "_s + rawValue(language)))
                    << PreviewState::Studying << section << language;
            QTest::newRow(qPrintable(u"sign-in, "_s + rawValue(language)))
                << PreviewState::SignIn << ProductSection::Focus << language;
        }
    }

    void everythingIsThereAndCanBeRead()
    {
        QFETCH(PreviewState, state);
        QFETCH(ProductSection, section);
        QFETCH(AppLanguage, language);
        PreviewScene scene(state, PreviewDesktop::Whole, language);
        scene.standStill();
        PreviewWindow window(scene, section, usual);
        const auto measured = measureTexts(window);
        QVERIFY(measured.ok());
        QCOMPARE(window.view().rendererInterface()->graphicsApi(), QSGRendererInterface::Software);

        for (const auto &each : measured.value()) {
            const auto message =
                u"\"%1\": %2 pixels, ratio %3"_s.arg(each.text.text).arg(each.letterPixels).arg(each.lowest);
            QVERIFY2(each.letterPixels > 0 && each.lowest >= leastRatio, qPrintable(message));
        }
        QStringList texts;
        for (const auto &text : windowTexts(window.content()))
            texts.append(withoutTime(text.text.simplified()));
        const auto expected = textsWithOpenGL(optionsOf(state, section, language));
        QVERIFY(expected.size() > 8);
        QCOMPARE(texts, expected);

        QList<QRect> images;
        collectImages(window.content(), images);
        QVERIFY(!images.isEmpty());
        const auto picture = window.grab();
        QVERIFY(picture.ok());
        for (const auto &image : images)
            QVERIFY2(isDrawn(picture.value(), image),
                     qPrintable(u"an icon is missing at %1,%2"_s.arg(image.x()).arg(image.y())));
        QCOMPARE(m_warnings.take(), QStringList());
    }
};

int main(int argc, char **argv)
{
    QQuickWindow::setSceneGraphBackend(u"software"_s);
    return runWindowTest<tst_softwareRenderer>(argc, argv);
}

#include "tst_softwareRenderer.moc"
