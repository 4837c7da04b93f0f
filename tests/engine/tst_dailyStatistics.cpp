#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestDailyStatistics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstStartOfADayBeginsAtZero()
    {
        ControllerHarness harness;
        harness.preferences.values[u"studySeconds-2026-03-09"_s] = qint64{900};
        const auto &controller = harness.start();
        QCOMPARE(controller.todayStudySeconds(), 0);
        QCOMPARE(controller.completedSessions(), 0);
    }

    void restartOnTheSameDayBringsTheCountersBack()
    {
        ControllerHarness harness;
        harness.startWith(ControllerHarness::config(1));
        harness.controller->startStudy();
        harness.seconds(60);
        const auto &controller = harness.start();
        QCOMPARE(controller.todayStudySeconds(), 60);
        QCOMPARE(controller.completedSessions(), 1);
    }

    void everyCountedSecondIsSavedUnderItsDay()
    {
        ControllerHarness harness;
        harness.start();
        harness.controller->startStudy();
        harness.seconds(1);
        using Write = FakePreferences::Write;
        QCOMPARE(harness.preferences.writes.size(), std::size_t(4));
        QCOMPARE(harness.preferences.writes[2],
                 (Write{u"studySeconds-2026-03-10"_s, qint64{2}, Durability::Soon}));
        QCOMPARE(harness.preferences.writes[3],
                 (Write{u"completedSessions-2026-03-10"_s, qint64{0}, Durability::Soon}));
    }

    /// A second that writes the progress file anyway makes the counters durable too, so they are never more
    /// than a counted minute behind.
    void onlyTheSecondThatEarnsXPIsDurableAtOnce()
    {
        ControllerHarness harness;
        harness.start();
        harness.controller->startStudy();
        harness.seconds(58);
        for (const auto &write : harness.preferences.writes)
            QCOMPARE(write.durability, Durability::Soon);
        QVERIFY(harness.files.steps.empty());
        harness.seconds(1);
        QCOMPARE(harness.preferences.writes.back().durability, Durability::AtOnce);
        QCOMPARE(harness.files.steps, std::vector<QString>({u"write progress.json"_s}));
    }

    void completionIsDurableAtOnce()
    {
        ControllerHarness harness;
        harness.startWith(ControllerHarness::config(1));
        harness.controller->startStudy();
        harness.seconds(59);
        QCOMPARE(harness.preferences.writes.back(),
                 (FakePreferences::Write{u"completedSessions-2026-03-10"_s, qint64{1}, Durability::AtOnce}));
    }

    void pausedSecondWritesNothing()
    {
        ControllerHarness harness;
        harness.start();
        harness.applications.leaveFrontEmpty();
        harness.controller->startStudy();
        harness.seconds(10);
        QVERIFY(harness.preferences.writes.empty());
    }

    void midnightDuringASessionStartsANewCount()
    {
        ControllerHarness harness;
        harness.clock.setWallClock(QDateTime(QDate(2026, 3, 10), QTime(23, 59, 50), Qt::UTC));
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(9);
        QCOMPARE(controller.todayStudySeconds(), 10);
        harness.seconds(1);
        QCOMPARE(controller.todayStudySeconds(), 1);
        QCOMPARE(controller.studyRemaining(), 1489);
        QCOMPARE(harness.preferences.values[u"studySeconds-2026-03-10"_s], PreferenceValue(qint64{10}));
        QCOMPARE(harness.preferences.values[u"studySeconds-2026-03-11"_s], PreferenceValue(qint64{1}));
    }

    void newDayTakesWhatTheStoreHolds()
    {
        ControllerHarness harness;
        harness.preferences.values[u"studySeconds-2026-03-11"_s] = qint64{77};
        harness.preferences.values[u"completedSessions-2026-03-11"_s] = qint64{2};
        auto &controller = harness.start();
        harness.clock.suspend(std::chrono::hours(24));
        harness.seconds(1);
        QCOMPARE(controller.todayStudySeconds(), 77);
        QCOMPARE(controller.completedSessions(), 2);
    }

    void changeOfTimeZoneReloadsWithTheNextHeartbeat()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(4);
        harness.clock.setTimeZone(QTimeZone("Pacific/Kiritimati")); // UTC+14: already the 11th
        harness.seconds(1);
        QCOMPARE(controller.todayStudySeconds(), 1);
        harness.clock.setTimeZone(QTimeZone::utc());
        harness.seconds(1);
        QCOMPARE(controller.todayStudySeconds(), 6);
    }

    void counterOfWrongTypeReadsZero()
    {
        ControllerHarness harness;
        harness.preferences.values[u"studySeconds-2026-03-10"_s] = u"900"_s;
        QCOMPARE(harness.start().todayStudySeconds(), 0);
    }

    void dayKeysDoNotFollowTheLocale()
    {
        QLocale::setDefault(QLocale(QLocale::Persian, QLocale::Iran));
        ControllerHarness harness;
        harness.start();
        harness.controller->startStudy();
        QLocale::setDefault(QLocale::c());
        QVERIFY(harness.preferences.values.contains(u"studySeconds-2026-03-10"_s));
    }
};

QUORVEL_TEST(TestDailyStatistics, QCoreApplication)
#include "tst_dailyStatistics.moc"
