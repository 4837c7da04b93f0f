// Every text of the window can be read where it stands, and the keyboard's ring can be seen.
#include "QmlWarnings.h"
#include "contrast.h"
#include "contrastReport.h"
#include "windowTest.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

const QSize usual(1180, 820);

/// Shows a section whole, and measures it.
Result<QList<TextContrast>> measureSection(PreviewWindow &window, ProductSection section)
{
    window.view().resize(usual);
    window.show(section);
    if (const auto grown = window.growToPage(); !grown)
        return grown.failure();
    return measureTexts(window);
}

struct Situation
{
    PreviewState state;
    PreviewDesktop desktop;
    QList<ProductSection> sections;
};

QList<Situation> situations()
{
    const QList<ProductSection> all(allProductSections.begin(), allProductSections.end());
    const auto whole = PreviewDesktop::Whole;
    QList<Situation> made{
        {PreviewState::Studying, whole, all},
        {PreviewState::Empty, PreviewDesktop::Nothing, all},
        {PreviewState::CodeSent, whole, {ProductSection::Focus}},
        {PreviewState::SignIn, whole, {ProductSection::Focus}},
        {PreviewState::Pro, whole, {ProductSection::Rules}},
        {PreviewState::Locked, whole, {ProductSection::Focus}},
        {PreviewState::Break, PreviewDesktop::Mixed, {ProductSection::Focus}},
        {PreviewState::Ready, whole, {ProductSection::Focus}},
    };
    if (all.contains(ProductSection::Coach))
        made.append({PreviewState::CoachRunning, whole, {ProductSection::Coach}});
    return made;
}

} // namespace

class tst_contrast : public QObject
{
    Q_OBJECT

private:
    QmlWarnings m_warnings;
    ContrastReport m_report;

private Q_SLOTS:
    void theFormulaIsThatOfTheGuidelines()
    {
        QCOMPARE(contrastRatio(Qt::white, Qt::black), 21.0);
        QCOMPARE(contrastRatio(Qt::black, Qt::white), 21.0);
        QVERIFY(std::abs(contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white) - 4.48) < 0.005);
        QCOMPARE(laidOver(QColor(255, 255, 255, 51), QColor(0, 0, 0)), QColor(51, 51, 51));
    }

    void everyTextIsMeasured_data()
    {
        QTest::addColumn<int>("situation");
        QTest::addColumn<AppLanguage>("language");
        const auto all = situations();
        for (int index = 0; index < all.size(); ++index) {
            for (const auto language : {AppLanguage::English, AppLanguage::Russian})
                QTest::addRow("%s, %s", qPrintable(nameOf(all[index].state)), qPrintable(rawValue(language)))
                    << index << language;
        }
    }

    void everyTextIsMeasured()
    {
        QFETCH(int, situation);
        QFETCH(AppLanguage, language);
        const auto [state, desktop, sections] = situations().at(situation);
        PreviewScene scene(state, desktop, language);
        scene.standStill();
        PreviewWindow window(scene, sections.first(), usual);
        for (const auto section : sections) {
            const auto measured = measureSection(window, section);
            QVERIFY2(measured.ok(), qPrintable(measured.ok() ? QString() : measured.reason()));
            QVERIFY(measured.value().size() > 8);
            const bool isGate = scene.controller().accessMode() == AccessMode::None;
            const auto shown = isGate ? u"sign-in"_s : rawValue(section);
            for (const auto &each : measured.value()) {
                QVERIFY2(each.letterPixels > 0, qPrintable(each.text.text + u" is not drawn"_s));
                m_report.note(each, u"%1, %2, %3"_s.arg(shown, nameOf(state), rawValue(language)));
            }
        }
        QCOMPARE(m_warnings.take(), QStringList());
    }

    void whatFallsShortIsKnown()
    {
        if (m_report.isEmpty())
            QSKIP("nothing was measured: the whole test was not run");
        const auto table = m_report.table();
        printf("%s\n", qPrintable(table));
        QCOMPARE(m_report.shortfalls(), ContrastReport::knownShortfalls());
        if (qEnvironmentVariableIsSet("QUORVEL_WRITE_CONTRAST")) {
            QFile file(QStringLiteral(QUORVEL_CONTRAST));
            QVERIFY(file.open(QFile::WriteOnly));
            file.write(table.toUtf8());
            return;
        }
        QFile file(QStringLiteral(QUORVEL_CONTRAST));
        QVERIFY(file.open(QFile::ReadOnly));
        QVERIFY2(m_report.agreesWith(QString::fromUtf8(file.readAll())),
                 "docs/contrast.md is not what was measured: QUORVEL_WRITE_CONTRAST=1 and this test write it "
                 "anew");
    }

    /// The ring or outline of a control that has the keyboard against what is around it.
    void theKeyboardIsSeen_data()
    {
        QTest::addColumn<PreviewState>("state");
        QTest::addColumn<ProductSection>("section");
        QTest::addColumn<QString>("name");
        const auto add = [](PreviewState state, ProductSection section, const QStringList &names) {
            for (const auto &name : names)
                QTest::newRow(qPrintable(nameOf(state) + u": "_s + name)) << state << section << name;
        };
        add(PreviewState::Ready, ProductSection::Focus,
            {u"Start Study"_s, u"Manual 15m Break"_s, u"Manual Lock"_s, u"Sign Out"_s, u"Focus"_s, u"Cards"_s,
             u"ENG"_s, u"RUS"_s, u"Current topic"_s, u"Submit"_s, u"Reveal"_s, u"Answer from memory"_s});
        add(PreviewState::Pro, ProductSection::Rules,
            {u"Pro mode"_s, u"Blocked apps"_s, u"Study minutes"_s, u"Save Settings"_s});
        add(PreviewState::SignIn, ProductSection::Focus,
            {u"Email"_s, u"Verify Email"_s, u"Continue with Google"_s});
    }

    void theKeyboardIsSeen()
    {
        QFETCH(PreviewState, state);
        QFETCH(ProductSection, section);
        QFETCH(QString, name);
        PreviewScene scene(state, PreviewDesktop::Whole, AppLanguage::English);
        scene.standStill();
        PreviewWindow window(scene, section, usual);
        QVERIFY(window.growToPage().ok());
        if (const auto focused = window.focus(name); !focused)
            QFAIL(qPrintable(focused.reason()));
        const auto *control = controlNamed(window.view(), name);
        for (const auto *around = control; around; around = around->parentItem()) {
            if (viewNameOf(*around) == u"GlassTextArea") // its text scrolls within it
                control = around;
        }
        const auto with = window.grab();
        window.leaveFocus();
        const auto without = window.grab();
        QVERIFY(with.ok() && without.ok());
        const auto place = control->mapRectToScene(QRectF(QPointF(), control->size()));
        const auto ring = measureRing(with.value(), without.value(), place);
        QVERIFY2(
            ring.lowest >= 3,
            qPrintable(u"%1: %2 at its weakest, %3 pixels"_s.arg(name).arg(ring.lowest).arg(ring.pixels)));
    }
};

int main(int argc, char **argv)
{
    return runWindowTest<tst_contrast>(argc, argv);
}

#include "tst_contrast.moc"
