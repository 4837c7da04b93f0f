#include "ControllerHarness.h"
#include "builtInLists.h"

#include <QTest>

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

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
