#include "ControllerHarness.h"
#include "suite.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;
using Request = FakeRunningApplications::Request;

class TestApplicationBlocking : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void politeApplicationIsClosedOnce()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        const auto steam = harness.applications.start(u"Steam"_s);
        controller.lockNow();
        QCOMPARE(controller.blockedRunningAppNames(), QStringList({u"Steam"_s}));
        harness.seconds(10);
        QCOMPARE(harness.applications.requests, std::vector<Request>({{steam, false}}));
        QCOMPARE(harness.events(), QStringList({u"Closed Steam."_s, u"Locked manually."_s}));
        QCOMPARE(controller.blockedRunningAppNames(), QStringList());
    }

    /// Asked at second 0; at second 5 exactly 5.0 s have passed, which is not more than 5.
    void stubbornApplicationIsForcedAfterMoreThanFiveSeconds()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        const auto discord = harness.applications.startStubborn(u"Discord"_s);
        controller.lockNow();
        harness.seconds(5);
        QCOMPARE(harness.applications.requests, std::vector<Request>({{discord, false}}));
        harness.seconds(1);
        QCOMPARE(harness.applications.requests, std::vector<Request>({{discord, false}, {discord, true}}));
        QCOMPARE(harness.events().first(), u"Force closed Discord."_s);
    }

    void justMoreThanFiveSecondsForce()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.startStubborn(u"Discord"_s);
        controller.lockNow();
        harness.clock.advance(std::chrono::milliseconds(5001));
        controller.tick();
        QCOMPARE(harness.applications.requests.size(), std::size_t(2));
    }

    void forcedQuitRenewsItsStamp()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.startImmortal(u"Discord"_s);
        controller.lockNow();
        harness.seconds(6);
        QCOMPARE(harness.applications.requests.size(), std::size_t(2));
        harness.seconds(5);
        QCOMPARE(harness.applications.requests.size(), std::size_t(2));
        harness.seconds(1);
        QCOMPARE(harness.applications.requests.size(), std::size_t(3));
        QVERIFY(harness.applications.requests.back().forced);
        QCOMPARE(harness.events().count(u"Force closed Discord."_s), 2);
    }

    void stampsOutliveTheEndOfBlocking()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.startStubborn(u"Discord"_s);
        controller.lockNow();
        controller.stopQuorvel();
        harness.seconds(60);
        QCOMPARE(harness.applications.requests.size(), std::size_t(1));
        controller.lockNow(); // the stamp is a minute old, so force follows at once
        QCOMPARE(harness.applications.requests.size(), std::size_t(2));
        QVERIFY(harness.applications.requests.back().forced);
    }

    void applicationThatIsGoneIsForgotten()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        RunningApplication game;
        game.processId = 2'000'000;
        game.localizedName = u"Steam"_s;
        harness.applications.add(game);
        controller.lockNow();           // asked to quit, and gone
        harness.seconds(1);             // forgotten
        harness.applications.add(game); // the same number again
        harness.seconds(10);
        QCOMPARE(harness.applications.requests,
                 std::vector<Request>({{2'000'000, false}, {2'000'000, false}}));
    }

    void clockChangeDoesNotHurryTheForce()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.startStubborn(u"Discord"_s);
        controller.lockNow();
        harness.clock.suspend(std::chrono::hours(8));
        harness.seconds(5);
        QCOMPARE(harness.applications.requests.size(), std::size_t(1));
    }

    void matching_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("blocked");
        QTest::newRow("entry in upper case") << u"STEAM"_s << u"Steam"_s << QString() << QString() << true;
        QTest::newRow("part of the name")
            << u"steam"_s << u"My Steam Helper"_s << QString() << QString() << true;
        QTest::newRow("bundle") << u"steam"_s << u"Launcher"_s << u"com.valvesoftware.Steam"_s << QString()
                                << true;
        QTest::newRow("path") << u"steam"_s << u"Helper"_s << QString() << u"/opt/Steam/helper"_s << true;
        QTest::newRow("trimmed entry") << u"  Steam\n"_s << u"Steam"_s << QString() << QString() << true;
        QTest::newRow("only spaces") << u"   "_s << u"Steam Space"_s << QString() << u"/a b"_s << false;
        QTest::newRow("empty entry") << QString() << u"Steam"_s << QString() << QString() << false;
        QTest::newRow("no match") << u"Steam"_s << u"Anki"_s << u"net.ankiweb.Anki"_s << u"/usr/bin/anki"_s
                                  << false;
        QTest::newRow("nothing known") << u"Unknown"_s << QString() << QString() << QString() << true;
    }
    void matching()
    {
        QFETCH(QString, entry);
        QFETCH(QString, name);
        QFETCH(QString, bundle);
        QFETCH(QString, path);
        QFETCH(bool, blocked);
        ControllerHarness harness;
        harness.applications.end(harness.studyApplication);
        auto config = QuorvelConfig::defaults();
        config.blockedApps = {entry};
        auto &controller = harness.startWith(config);
        harness.applications.start(name, bundle, path);
        QCOMPARE(controller.findBlockedRunningApps().size(), std::size_t(blocked ? 1 : 0));
    }

    void applicationWithoutNameIsReportedByItsIdentifier()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.start(QString(), u"com.spotify.Client"_s);
        harness.applications.start(QString(), QString(), u"/opt/discord/discord"_s);
        controller.lockNow();
        QCOMPARE(harness.events().mid(0, 2),
                 QStringList({u"Closed Unknown."_s, u"Closed com.spotify.Client."_s}));

        controller.stopQuorvel();
        controller.setLanguage(AppLanguage::Russian);
        harness.applications.start(QString(), QString(), u"/opt/discord/discord"_s);
        controller.lockNow();
        QCOMPARE(harness.events().first(), u"Closed Неизвестно."_s);
    }

    void ownProcessIsNeverBlocked()
    {
        ControllerHarness harness;
        auto config = QuorvelConfig::defaults();
        config.blockedApps = {u"Quorvel"_s};
        auto &controller = harness.startWith(config);
        RunningApplication own;
        own.processId = qint32(QCoreApplication::applicationPid());
        own.localizedName = u"Quorvel"_s;
        harness.applications.add(own);
        const auto other = harness.applications.start(u"Quorvel"_s);
        controller.lockNow();
        QCOMPARE(harness.applications.requests, std::vector<Request>({{other, false}}));
    }

    void freeModesNeitherListNorClose()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.start(u"Steam"_s);
        harness.seconds(10);
        QCOMPARE(controller.blockedRunningAppNames(), QStringList());
        QCOMPARE(controller.blockedAppSummaryText(), u"Blocking off"_s);
        controller.unlockManualBreak(15);
        harness.seconds(10);
        QCOMPARE(controller.blockedRunningAppNames(), QStringList());
        QVERIFY(harness.applications.requests.empty());
        QCOMPARE(controller.findBlockedRunningApps().size(), std::size_t(1));
    }

    void namesAreSortedWithRepeatsKept()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        for (const auto &name : {u"Zoom"_s, u"Discord"_s, u"Zoom"_s, u"Steam"_s})
            harness.applications.startImmortal(name);
        controller.lockNow();
        QCOMPARE(controller.blockedRunningAppNames(),
                 QStringList({u"Discord"_s, u"Steam"_s, u"Zoom"_s, u"Zoom"_s}));
        QCOMPARE(controller.blockedAppSummaryText(), u"Discord, Steam, Zoom, Zoom"_s);
    }

    void listIsEmptiedWhenBlockingEnds()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.applications.startImmortal(u"Steam"_s);
        controller.lockNow();
        QCOMPARE(controller.blockedRunningAppNames().size(), 1);
        controller.stopQuorvel();
        QCOMPARE(controller.blockedRunningAppNames(), QStringList());
    }
};

QUORVEL_TEST(TestApplicationBlocking, QCoreApplication)
#include "tst_applicationBlocking.moc"
