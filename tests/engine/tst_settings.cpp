#include "ControllerHarness.h"
#include "builtInLists.h"
#include "suite.h"

#include <algorithm>

using namespace Qt::StringLiterals;

class TestSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oldFileIsMigratedAndSavedAtStart()
    {
        ControllerHarness harness;
        harness.files.files[u"config.json"_s] = R"({"studyMinutes": 50})";
        const auto &controller = harness.start();
        auto expected = QuorvelConfig::defaults();
        expected.studyMinutes = 50;
        QCOMPARE(controller.config(), expected);
        QCOMPARE(harness.files.files[u"config.json"_s], encodeConfig(expected));
        QVERIFY(controller.recentEvents().isEmpty());
        QCOMPARE(controller.studyMinutesText(), u"50"_s);
    }

    void laterVersionIsKept()
    {
        ControllerHarness harness;
        auto config = QuorvelConfig::defaults();
        config.blockedApps = {u"Steam"_s};
        config.blocklistPresetVersion = 7;
        const auto &controller = harness.startWith(config);
        QCOMPARE(controller.config(), config);
        QVERIFY(harness.files.steps.empty());
    }

    void mergeTwiceChangesOnceAndLogsTwice()
    {
        ControllerHarness harness;
        auto config = QuorvelConfig::defaults();
        config.blockedApps = {u"My Game"_s};
        auto &controller = harness.startWith(config);
        controller.mergeDefaultBlocklists();
        QCOMPARE(controller.config().blockedApps, QStringList(u"My Game"_s) + builtInBlockedApps());
        const auto merged = controller.config();
        controller.mergeDefaultBlocklists();
        QCOMPARE(controller.config(), merged);
        QCOMPARE(std::count(harness.files.steps.begin(), harness.files.steps.end(), u"write config.json"_s),
                 2);
        QCOMPARE(harness.events(), QStringList({u"Expanded default blocklists merged."_s,
                                                u"Expanded default blocklists merged."_s}));
        QVERIFY(controller.blockedAppsText().startsWith(u"My Game\nSteam\n"));
    }

    void draftsFollowTheSettings()
    {
        ControllerHarness harness;
        const auto &controller = harness.start();
        QCOMPARE(controller.studyMinutesText(), u"25"_s);
        QCOMPARE(controller.breakMinutesText(), u"45"_s);
        QCOMPARE(controller.maxIdleSecondsText(), u"180"_s);
        QCOMPARE(controller.requiredProofsText(), u"0"_s);
        QCOMPARE(controller.blockedAppsText().count(u'\n'), 26);
        QCOMPARE(controller.blockedDomainsText().count(u'\n'), 33);
        QCOMPARE(controller.allowedStudyDomainsText(), QString());
        QVERIFY(controller.allowedStudyAppsText().endsWith(u"\nFinder"));
    }

    void savingKeepsOneOfEachLineAsItWasWritten()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setBlockedAppsText(u"Steam\n  Steam  \r\n\u2028steam\u0085\n"_s);
        controller.setAllowedStudyDomainsText(QString());
        controller.saveSettings();
        QCOMPARE(controller.config().blockedApps, QStringList({u"Steam"_s, u"steam"_s}));
        QCOMPARE(controller.config().allowedStudyDomains, QStringList());
        QCOMPARE(controller.blockedAppsText(), u"Steam\nsteam"_s);
        QCOMPARE(harness.storedConfig(), controller.config());
        QCOMPARE(harness.files.steps, std::vector<QString>{u"write config.json"_s});
        QCOMPARE(harness.events(), QStringList{u"Settings saved."_s});
    }

    void everyDraftReachesItsOwnField()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setStudyMinutesText(u"31"_s);
        controller.setBreakMinutesText(u"32"_s);
        controller.setMaxIdleSecondsText(u"33"_s);
        controller.setRequiredProofsText(u"4"_s);
        controller.setBlockedAppsText(u"a"_s);
        controller.setBlockedDomainsText(u"b.example"_s);
        controller.setAllowedStudyDomainsText(u"c.example"_s);
        controller.setAllowedStudyAppsText(u"d"_s);
        controller.saveSettings();
        const QuorvelConfig expected{.studyMinutes = 31,
                                     .breakMinutes = 32,
                                     .maxIdleSeconds = 33,
                                     .requiredProofsToUnlock = 4,
                                     .blockedApps = {u"a"_s},
                                     .blockedDomains = {u"b.example"_s},
                                     .allowedStudyDomains = {u"c.example"_s},
                                     .allowedStudyApps = {u"d"_s},
                                     .blocklistPresetVersion = 2};
        QCOMPARE(controller.config(), expected);
        QCOMPARE(controller.requiredProofsToUnlock(), 4);
        QCOMPARE(controller.proofPolicyText(), u"4 cards"_s);
    }

    void numbersFallBackAndAreClamped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint64>("study");
        QTest::addColumn<qint64>("idle");
        QTest::addColumn<qint64>("proofs");
        QTest::newRow("0") << u"0"_s << qint64(1) << qint64(15) << qint64(0);
        QTest::newRow("9999") << u"9999"_s << qint64(240) << qint64(3600) << qint64(20);
        QTest::newRow("-3") << u"-3"_s << qint64(1) << qint64(15) << qint64(0);
        QTest::newRow("+30") << u" +30\n"_s << qint64(30) << qint64(30) << qint64(20);
        QTest::newRow("25 min") << u"25 min"_s << qint64(50) << qint64(200) << qint64(3);
        QTest::newRow("empty") << QString() << qint64(50) << qint64(200) << qint64(3);
        QTest::newRow("too large a number")
            << u"9223372036854775808"_s << qint64(50) << qint64(200) << qint64(3);
        QTest::newRow("other digits") << u"\u0663\u0660"_s << qint64(50) << qint64(200) << qint64(3);
    }
    void numbersFallBackAndAreClamped()
    {
        QFETCH(QString, typed);
        ControllerHarness harness;
        auto config = ControllerHarness::config(50, 45, 3);
        config.maxIdleSeconds = 200;
        auto &controller = harness.startWith(config);
        controller.setStudyMinutesText(typed);
        controller.setMaxIdleSecondsText(typed);
        controller.setRequiredProofsText(typed);
        controller.saveSettings();
        QTEST(controller.config().studyMinutes, "study");
        QTEST(controller.config().maxIdleSeconds, "idle");
        QTEST(controller.config().requiredProofsToUnlock, "proofs");
        QCOMPARE(controller.studyMinutesText(), QString::number(controller.config().studyMinutes));
        QCOMPARE(controller.maxIdleSecondsText(), QString::number(controller.config().maxIdleSeconds));
    }

    void aStoredNumberOutOfRangeIsPulledIntoItWhenItIsFallenBackTo()
    {
        ControllerHarness harness;
        auto config = ControllerHarness::config(100'000, -5, 99);
        config.maxIdleSeconds = 1;
        auto &controller = harness.startWith(config);
        controller.setStudyMinutesText(u"many"_s);
        controller.setBreakMinutesText(QString());
        controller.setMaxIdleSecondsText(u"1.5"_s);
        controller.setRequiredProofsText(u"0x10"_s);
        controller.saveSettings();
        QCOMPARE(controller.config().studyMinutes, 240);
        QCOMPARE(controller.config().breakMinutes, 1);
        QCOMPARE(controller.config().maxIdleSeconds, 15);
        QCOMPARE(controller.config().requiredProofsToUnlock, 20);
    }

    void thePresetVersionIsKept()
    {
        ControllerHarness harness;
        auto config = QuorvelConfig::defaults();
        config.blocklistPresetVersion = 7;
        auto &controller = harness.startWith(config);
        controller.saveSettings();
        QCOMPARE(controller.config(), config);
        controller.resetDefaultSettings();
        QCOMPARE(controller.config(), QuorvelConfig::defaults());
    }

    void theClockFollowsTheSettingsOnlyInReadyAndLocked_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<qint64>("afterSaving");
        QTest::addColumn<qint64>("afterReset");
        QTest::newRow("ready") << u"ready"_s << qint64(2400) << qint64(1500);
        QTest::newRow("locked") << u"locked"_s << qint64(2400) << qint64(1500);
        QTest::newRow("studying") << u"studying"_s << qint64(599) << qint64(599);
        QTest::newRow("break") << u"break"_s << qint64(600) << qint64(600);
    }
    void theClockFollowsTheSettingsOnlyInReadyAndLocked()
    {
        QFETCH(QString, mode);
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(10, 5));
        if (mode == u"locked")
            controller.lockNow();
        else if (mode == u"studying")
            controller.startStudy();
        else if (mode == u"break")
            controller.unlockManualBreak(15);
        controller.setStudyMinutesText(u"40"_s);
        controller.setBreakMinutesText(u"50"_s);
        const auto breakRemaining = controller.breakRemaining();
        controller.saveSettings();
        QTEST(controller.studyRemaining(), "afterSaving");
        QCOMPARE(controller.breakRemaining(), breakRemaining);
        controller.resetDefaultSettings();
        QTEST(controller.studyRemaining(), "afterReset");
    }

    void resettingKeepsProModeAndShowsTheBuiltInLists()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(10, 5, 3));
        controller.setProModeEnabled(true);
        controller.setBlockedAppsText(u"Mine"_s);
        controller.saveSettings();
        controller.resetDefaultSettings();
        QVERIFY(controller.proModeEnabled());
        QCOMPARE(controller.config(), QuorvelConfig::defaults());
        QCOMPARE(controller.blockedAppsText(), builtInBlockedApps().join(u'\n'));
        QCOMPARE(controller.studyMinutesText(), u"25"_s);
        QCOMPARE(harness.events().first(), u"Default settings restored."_s);
        QCOMPARE(harness.storedConfig(), QuorvelConfig::defaults());
    }

    void draftsThatWereNotSavedChangeNothing()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setStudyMinutesText(u"40"_s);
        controller.startStudy();
        QCOMPARE(controller.studyRemaining(), 1499);
        QCOMPARE(controller.studyMinutesText(), u"40"_s);
        QCOMPARE(controller.config(), QuorvelConfig::defaults());
    }

    void aFailedSaveIsToldAndTheSettingsAreInForce()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setLanguage(AppLanguage::Russian);
        harness.files.writeFailure = u"Permission denied"_s;
        controller.setStudyMinutesText(u"40"_s);
        controller.saveSettings();
        QCOMPARE(harness.events(),
                 QStringList({u"Settings saved."_s, u"Could not save settings: Permission denied"_s}));
        QCOMPARE(controller.config().studyMinutes, 40);
        QCOMPARE(controller.studyMinutesText(), u"40"_s);
        controller.resetDefaultSettings();
        QCOMPARE(harness.events().first(2), QStringList({u"Default settings restored."_s,
                                                         u"Could not save settings: Permission denied"_s}));
    }

    void proModeIsStoredAndLogged()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QVERIFY(!controller.proModeEnabled());
        controller.setProModeEnabled(true);
        QCOMPARE(harness.preferences.writes.back(),
                 (FakePreferences::Write{u"proModeEnabled"_s, true, Durability::AtOnce}));
        QVERIFY(harness.start().proModeEnabled());
        harness.controller->setProModeEnabled(false);
        QCOMPARE(harness.events(), QStringList({u"Pro mode disabled."_s}));
        QVERIFY(!harness.start().proModeEnabled());
    }

    void undecodableSettingsGiveTheDefaults()
    {
        ControllerHarness harness;
        harness.files.files[u"config.json"_s] = R"({"studyMinutes": "50"})";
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"config.json could not be loaded"_s));
        const auto &controller = harness.start();
        QCOMPARE(controller.config(), QuorvelConfig::defaults());
        QVERIFY(controller.recentEvents().isEmpty());
        QVERIFY(harness.files.steps.empty());
    }

    void failedSaveOfTheMigrationIsTold()
    {
        ControllerHarness harness;
        harness.files.files[u"config.json"_s] = "{}";
        harness.files.writeFailure = u"Read-only file system"_s;
        harness.start();
        QCOMPARE(harness.events(), QStringList({u"Could not save settings: Read-only file system"_s}));
        QCOMPARE(harness.controller->config().blocklistPresetVersion, 2);
    }
};

QUORVEL_TEST(TestSettings, QCoreApplication)
#include "tst_settings.moc"
