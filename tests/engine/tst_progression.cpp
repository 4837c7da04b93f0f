#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

UserProgress withXP(qint64 totalXP)
{
    UserProgress progress;
    progress.totalXP = totalXP;
    return progress;
}

} // namespace

class TestProgression : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void levelUpNamesTheTitleAndComesBeforeTheAward()
    {
        ControllerHarness harness;
        harness.storeProgress(withXP(99));
        auto &controller = harness.start();
        controller.awardXP(1, u"Focused for one minute."_s);
        QCOMPARE(harness.events(),
                 QStringList({u"+1 XP. Focused for one minute."_s, u"Level up: Prep Rookie."_s}));
        QCOMPARE(controller.levelText(), u"Level 2"_s);
    }

    void titleChangesAt200XP()
    {
        ControllerHarness harness;
        harness.storeProgress(withXP(195));
        auto &controller = harness.start();
        controller.awardXP(10, u"Card proof completed."_s);
        QCOMPARE(controller.userProgress().totalXP, 205);
        QCOMPARE(controller.levelText(), u"Level 3"_s);
        QCOMPARE(controller.xpText(), u"5/100 XP"_s);
        QCOMPARE(controller.characterTitleText(), u"Focus Scout"_s);
        QCOMPARE(controller.avatarSymbol(), u"bolt.fill"_s);
        QCOMPARE(harness.events(),
                 QStringList({u"+10 XP. Card proof completed."_s, u"Level up: Focus Scout."_s}));
    }

    void severalLevelsAtOnceLogOneEvent()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.awardXP(950, u"A gift."_s);
        QCOMPARE(harness.events(), QStringList({u"+950 XP. A gift."_s, u"Level up: Deep Work Adept."_s}));
    }

    void awardBelowOneDoesNothing()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.awardXP(0, u"x"_s);
        controller.awardXP(-7, u"x"_s);
        QVERIFY(harness.events().isEmpty());
        QVERIFY(harness.files.steps.empty());
    }

    void awardSavesAtOnce()
    {
        ControllerHarness harness;
        harness.start().awardXP(3, u"Study task completed."_s);
        QCOMPARE(harness.storedProgress().totalXP, 3);
    }

    void streakIsMarkedBeforeTheSessionAward()
    {
        ControllerHarness harness;
        UserProgress progress;
        progress.currentStreak = 1;
        progress.longestStreak = 1;
        progress.lastCompletedStudyDay = u"2026-03-09"_s;
        harness.storeProgress(progress);
        auto &controller = harness.startWith(ControllerHarness::config(1));
        controller.startStudy();
        harness.seconds(59);
        QCOMPARE(controller.streakText(), u"2 days"_s);
        QCOMPARE(harness.storedProgress().lastCompletedStudyDay, std::optional(u"2026-03-10"_s));
    }

    void streakTexts_data()
    {
        QTest::addColumn<qint64>("streak");
        QTest::addColumn<QString>("inEnglish");
        QTest::addColumn<QString>("inRussian");
        QTest::newRow("none") << qint64{0} << u"0 days"_s << u"0 дней"_s;
        QTest::newRow("one") << qint64{1} << u"1 day"_s << u"1 день"_s;
        QTest::newRow("two") << qint64{2} << u"2 days"_s << u"2 дней"_s;
        QTest::newRow("twenty-one") << qint64{21} << u"21 days"_s << u"21 дней"_s;
    }
    void streakTexts()
    {
        QFETCH(qint64, streak);
        ControllerHarness harness;
        UserProgress progress;
        progress.currentStreak = streak;
        progress.longestStreak = 7;
        harness.storeProgress(progress);
        auto &controller = harness.start();
        QTEST(controller.streakText(), "inEnglish");
        controller.setLanguage(AppLanguage::Russian);
        QTEST(controller.streakText(), "inRussian");
        QCOMPARE(controller.bestStreakText(), u"7 дней"_s);
    }

    void totalsFollow()
    {
        ControllerHarness harness;
        UserProgress progress;
        progress.totalXP = 250;
        progress.totalFocusSeconds = 3725;
        progress.totalCardProofs = 4;
        progress.longestStreak = 1;
        harness.storeProgress(progress);
        auto &controller = harness.startWith(ControllerHarness::config(25, 45, 1));
        QCOMPARE(controller.totalXP(), 250);
        QCOMPARE(controller.totalFocusSeconds(), 3725);
        QCOMPARE(controller.totalCardProofs(), 4);
        QCOMPARE(controller.bestStreakText(), u"1 day"_s);
        harness.addCard(u"1+1?"_s, u"2"_s);
        QCOMPARE(controller.studyCardCount(), 1);
        controller.startStudy();
        harness.seconds(2);
        QCOMPARE(controller.totalFocusSeconds(), 3728); // the start counts one too
        harness.answerRightly();
        QCOMPARE(controller.totalCardProofs(), 5);
        QCOMPARE(controller.totalXP(), 260);
    }

    void summaryInBothLanguages()
    {
        ControllerHarness harness;
        UserProgress progress;
        progress.totalXP = 250;
        progress.totalFocusSeconds = 3725;
        progress.totalCardProofs = 1;
        progress.currentStreak = 1;
        harness.storeProgress(progress);
        auto &controller = harness.start();
        QCOMPARE(controller.progressSummaryText(),
                 u"Level 3, Focus Scout, 250 XP, 1 day streak, 1:02:05 total focus, 1 card proofs."_s);
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(
            controller.progressSummaryText(),
            u"Уровень 3, Разведчик фокуса, 250 XP, стрик 1 день, всего фокуса 1:02:05, пруфов карточками 1."_s);
    }

    void failedSaveIsTold()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.files.writeFailure = u"No space left on device"_s;
        controller.awardXP(1, u"Focused for one minute."_s);
        QCOMPARE(harness.events().first(), u"Could not save progress: No space left on device"_s);
        QCOMPARE(controller.userProgress().totalXP, 1);
    }

    void unreadableProgressStartsFresh()
    {
        ControllerHarness harness;
        harness.files.files[u"progress.json"_s] = "{\"totalXP\": 5}";
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"progress.json could not be loaded"_s));
        QCOMPARE(harness.start().userProgress(), UserProgress());
    }
};

QUORVEL_TEST(TestProgression, QCoreApplication)
#include "tst_progression.moc"
