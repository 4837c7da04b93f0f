#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Mode = QuorvelController::Mode;

namespace {

qint64 stored(const FakePreferences &preferences, const QString &key)
{
    return preferences.get<qint64>(key).value_or(-1);
}

} // namespace

/// Whole days on the fake clock: what a student's machine goes through between two mornings.
class TestSimulatedDays : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDayOfEightSessions()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(25, 5));
        for (int session = 0; session < 8; ++session) {
            controller.startStudy();
            harness.seconds(1499);
            QCOMPARE(controller.mode(), Mode::BreakTime);
            harness.seconds(300);
            QCOMPARE(controller.mode(), Mode::Ready);
        }
        QCOMPARE(controller.completedSessions(), 8);
        QCOMPARE(controller.todayStudySeconds(), 8 * 1500);
        QCOMPARE(controller.userProgress().totalXP, 8 * 50);
        QCOMPARE(controller.userProgress().currentStreak, 1);
        QCOMPARE(controller.recentEvents().size(), 8);
    }

    void sessionAcrossMidnightCountsForTheNewDay()
    {
        ControllerHarness harness;
        harness.clock.setWallClock(QDateTime(QDate(2026, 12, 31), QTime(23, 50), Qt::UTC));
        UserProgress progress;
        progress.currentStreak = 4;
        progress.longestStreak = 4;
        progress.lastCompletedStudyDay = u"2026-12-31"_s;
        harness.storeProgress(progress);
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(1499);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.completedSessions(), 1);
        QCOMPARE(stored(harness.preferences, u"studySeconds-2026-12-31"_s), 600);
        QCOMPARE(stored(harness.preferences, u"studySeconds-2027-01-01"_s), 900);
        QCOMPARE(stored(harness.preferences, u"completedSessions-2026-12-31"_s), 0);
        QCOMPARE(stored(harness.preferences, u"completedSessions-2027-01-01"_s), 1);
        QCOMPARE(controller.userProgress().currentStreak, 5);
    }

    /// Berlin, 2026-03-29: 02:00 becomes 03:00. The day is 23 hours long; no counted second is lost or
    /// doubled.
    void springForwardLosesNothing()
    {
        ControllerHarness harness;
        harness.clock.setTimeZone(QTimeZone("Europe/Berlin"));
        harness.clock.setWallClock(QDateTime(QDate(2026, 3, 29), QTime(1, 50), QTimeZone("Europe/Berlin")));
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(1499);
        QCOMPARE(harness.clock.now().time().hour(), 3);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(stored(harness.preferences, u"studySeconds-2026-03-29"_s), 1500);
    }

    /// Berlin, 2026-10-25: 03:00 becomes 02:00, so the hour comes twice.
    void fallBackCountsOnce()
    {
        ControllerHarness harness;
        harness.clock.setTimeZone(QTimeZone("Europe/Berlin"));
        harness.clock.setWallClock(QDateTime(QDate(2026, 10, 25), QTime(0, 50), Qt::UTC));
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(1499);
        QCOMPARE(harness.clock.now().time().hour(), 2);
        QCOMPARE(controller.completedSessions(), 1);
        QCOMPARE(controller.todayStudySeconds(), 1500);
    }

    /// Lebanon moves its clock at midnight, so the day 2026-03-29 begins at 01:00.
    void dayWithoutMidnightBeginsAtItsFirstSecond()
    {
        const QTimeZone beirut("Asia/Beirut");
        ControllerHarness harness;
        harness.clock.setTimeZone(beirut);
        harness.clock.setWallClock(QDateTime(QDate(2026, 3, 28), QTime(23, 59, 55), beirut));
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(9);
        QCOMPARE(harness.clock.now().date(), QDate(2026, 3, 29));
        QCOMPARE(stored(harness.preferences, u"studySeconds-2026-03-28"_s), 5);
        QCOMPARE(stored(harness.preferences, u"studySeconds-2026-03-29"_s), 5);
        QCOMPARE(controller.todayStudySeconds(), 5);
    }

    void streakAcrossTheShortAndTheLongDay()
    {
        const QTimeZone berlin("Europe/Berlin");
        ControllerHarness harness;
        harness.clock.setTimeZone(berlin);
        auto &controller = harness.startWith(ControllerHarness::config(1, 1));
        for (const auto &day : {QDate(2026, 3, 28), QDate(2026, 3, 29), QDate(2026, 3, 30)}) {
            harness.clock.setWallClock(QDateTime(day, QTime(0, 30), berlin));
            controller.startStudy();
            harness.seconds(59 + 60);
        }
        QCOMPARE(controller.userProgress().currentStreak, 3);
        QCOMPARE(controller.userProgress().longestStreak, 3);
    }

    void flightEastAndWestKeepsEachDaysCount()
    {
        ControllerHarness harness; // noon of the 10th in UTC
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(99);
        harness.clock.setTimeZone(QTimeZone("Pacific/Auckland")); // the 11th, 01:00
        harness.seconds(50);
        QCOMPARE(controller.todayStudySeconds(), 50);
        harness.clock.setTimeZone(QTimeZone("America/Los_Angeles")); // the 10th again
        harness.seconds(1);
        QCOMPARE(controller.todayStudySeconds(), 101);
        QCOMPARE(controller.userProgress().totalFocusSeconds, 151);
    }

    /// The lid is closed for a night in mid-session: no second of it counts, the session goes on next day.
    void suspendedHoursDoNotCount()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(599);
        harness.clock.suspend(20h);
        harness.idle.since = 20h; // input stopped with the lid
        harness.seconds(1);
        QCOMPARE(controller.studyRemaining(), 900);
        QCOMPARE(controller.todayStudySeconds(), 0); // a new day
        QCOMPARE(controller.statusMessage(), u"Paused: Mac is idle for 72000s."_s);
        harness.idle.since = 0s;
        harness.seconds(900);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.todayStudySeconds(), 900);
    }

    /// A break is counted in heartbeats, so it stands still while the machine sleeps.
    void breakStandsStillWhileSuspended()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.unlockManualBreak(15);
        harness.seconds(100);
        harness.clock.suspend(3h);
        harness.seconds(1);
        QCOMPARE(controller.breakRemaining(), 799);
    }

    void clockSetBackAndForthKeepsCounting()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(9);
        harness.clock.suspend(-30min);
        harness.seconds(10);
        harness.clock.suspend(2h);
        harness.seconds(10);
        QCOMPARE(controller.todayStudySeconds(), 30);
        QCOMPARE(controller.studyRemaining(), 1470);
    }

    void aMonthOfEveningsKeepsItsStreak()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(10, 5));
        for (int day = 0; day < 31; ++day) {
            controller.startStudy();
            harness.seconds(599 + 300);
            harness.clock.suspend(24h - 899s);
        }
        QCOMPARE(controller.userProgress().currentStreak, 31);
        QCOMPARE(controller.userProgress().totalCompletedSessions, 31);
        QCOMPARE(controller.userProgress().totalXP, 31 * 35);
        QCOMPARE(controller.characterTitleText(), u"Deep Work Adept"_s);
    }
};

QUORVEL_TEST(TestSimulatedDays, QCoreApplication)
#include "tst_simulatedDays.moc"
