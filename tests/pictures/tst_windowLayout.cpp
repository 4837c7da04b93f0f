// Nothing in the window is cut off, lies upon another or leaves its place, in any section, language and size.
#include "PreviewWindow.h"
#include "QmlWarnings.h"
#include "layoutFaults.h"

#include <QGuiApplication>
#include <QHashSeed>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(PreviewState)
Q_DECLARE_METATYPE(PreviewDesktop)

namespace {

const QSize smallest(900, 640);
const QSize usual(1180, 820);
const QSize wide(1680, 1000);
const QSize large(3840, 2160);

/// Where an item of the window's own would be wrong.
QQuickItem *addText(PreviewWindow &window, const QByteArray &properties)
{
    QQmlComponent component(window.view().engine());
    component.setData("import QtQuick\nText { " + properties + " }", QUrl());
    auto *item = qobject_cast<QQuickItem *>(component.create(window.view().rootContext()));
    item->setParent(&window.view());
    item->setParentItem(&window.content());
    return item;
}

} // namespace

class tst_windowLayout : public QObject
{
    Q_OBJECT

private:
    QmlWarnings m_warnings;

    static bool isAtNormalScale() { return qgetenv("QT_SCALE_FACTOR").isEmpty(); }

    /// Every size for what the pages usually show; for the rest, and for what only rounds otherwise, two.
    static QList<QSize> sizes(PreviewState state)
    {
        const bool isUsual = state == PreviewState::Studying || state == PreviewState::SignIn;
        return isUsual && isAtNormalScale() ? QList<QSize>{smallest, usual, wide, large}
                                            : QList<QSize>{smallest, usual};
    }

    static QStringList faultsOf(PreviewWindow &window, ProductSection section, QSize size)
    {
        window.view().resize(size);
        window.show(section);
        QStringList faults;
        for (const double distance : {0.0, 3000.0}) { // a list has only the rows in sight
            if (const auto there = window.scrollTo(distance); !there)
                return {there.reason()};
            for (const auto &fault : layoutFaults(window.view()))
                faults.append(u"%1 at %2x%3: %4"_s.arg(rawValue(section))
                                  .arg(size.width())
                                  .arg(size.height())
                                  .arg(fault));
        }
        faults.removeDuplicates();
        return faults;
    }

private Q_SLOTS:
    void everythingHasItsPlace_data()
    {
        QTest::addColumn<PreviewState>("state");
        QTest::addColumn<PreviewDesktop>("desktop");
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QList<ProductSection>>("sections");
        const QList<ProductSection> all(allProductSections.begin(), allProductSections.end());
        const auto add = [](PreviewState state, const QList<ProductSection> &sections,
                            PreviewDesktop desktop = PreviewDesktop::Whole) {
            for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
                if (!isAtNormalScale() && language == AppLanguage::English)
                    continue; // Russian is longer, and a scale only rounds otherwise
                const auto name = u"%1, %2, %3"_s.arg(nameOf(state), nameOf(desktop), rawValue(language));
                QTest::newRow(qPrintable(name)) << state << desktop << language << sections;
            }
        };
        add(PreviewState::Studying, all);
        if (!isAtNormalScale())
            return;
        add(PreviewState::Long, all, PreviewDesktop::Nothing);
        add(PreviewState::Empty, all, PreviewDesktop::Mixed);
        add(PreviewState::SignIn, {ProductSection::Focus});
        add(PreviewState::CodeSent, {ProductSection::Focus});
        add(PreviewState::Pro, {ProductSection::Rules});
        for (const auto state : {PreviewState::Locked, PreviewState::Break, PreviewState::Ready})
            add(state, {ProductSection::Focus});
        if (all.contains(ProductSection::Coach))
            add(PreviewState::CoachRunning, {ProductSection::Coach});
    }

    void everythingHasItsPlace()
    {
        QFETCH(PreviewState, state);
        QFETCH(PreviewDesktop, desktop);
        QFETCH(AppLanguage, language);
        QFETCH(QList<ProductSection>, sections);
        PreviewScene scene(state, desktop, language);
        scene.standStill();
        PreviewWindow window(scene, sections.first(), usual);
        if (state == PreviewState::Long)
            scene.controller().setProModeEnabled(true);
        QStringList faults;
        for (const auto &size : sizes(state)) {
            for (const auto section : sections)
                faults += faultsOf(window, section, size);
        }
        faults += m_warnings.take();
        QVERIFY2(faults.isEmpty(), qPrintable(u'\n' + faults.join(u'\n')));
    }

    // What the walk sees.

    void aTextThatIsCutOffIsSeen()
    {
        PreviewScene scene(PreviewState::Studying, PreviewDesktop::Whole, AppLanguage::English);
        scene.standStill();
        PreviewWindow window(scene, ProductSection::Focus, usual);
        QVERIFY(window.settle().ok());
        const auto before = layoutFaults(window.view());
        const auto faultsWith = [&](const QByteArray &properties) {
            const std::unique_ptr<QQuickItem> item(addText(window, properties));
            auto faults = layoutFaults(window.view());
            faults.removeIf([&](const QString &fault) { return before.contains(fault); });
            return faults.join(u'\n');
        };
        QCOMPARE(faultsWith("text: 'Fine'; x: 40; y: 500"), QString());
        QVERIFY(faultsWith("text: 'Elided'; width: 20; elide: Text.ElideRight; x: 40; y: 500")
                    .contains(u"is elided"_s));
        QVERIFY(faultsWith("text: 'Narrow'; width: 20; x: 40; y: 500").contains(u"larger than its item"_s));
        QVERIFY(faultsWith("text: 'Low'; height: 5; x: 40; y: 500").contains(u"larger than its item"_s));
        QVERIFY(faultsWith("text: 'Beside'; x: 1170; y: 4").contains(u"leaves the window"_s));
        QVERIFY(faultsWith("text: 'Upon'; x: 80; y: 24").contains(u"lies upon"_s));
    }
};

int main(int argc, char **argv)
{
    QHashSeed::setDeterministicGlobalSeed();
    qputenv("QSG_RENDER_LOOP", "basic");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Null); // everything but the pixels
    QGuiApplication application(argc, argv);
    tst_windowLayout test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowLayout.moc"
