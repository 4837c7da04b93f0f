#include "ControllerHarness.h"
#include "endOfProgram.h"
#include "eventTime.h"
#include "suite.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;

namespace {

/// A one-minute session that asks for two proofs, with as many cards.
struct ProofSession : ControllerHarness
{
    ProofSession()
    {
        storeCards({card(u"2 + 2"_s, u"4"_s), card(u"2 + 3"_s, u"5"_s)});
        startWith(config(1, 5, 2));
        controller->startStudy();
    }
};

} // namespace

class TestSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsInReadyWithFullClock()
    {
        ControllerHarness harness;
        const auto &controller = harness.start();
        QCOMPARE(controller.mode(), Mode::Ready);
        QCOMPARE(controller.studyRemaining(), 1500);
        QCOMPARE(controller.breakRemaining(), 0);
        QCOMPARE(controller.statusMessage(), u"Ready. Blocking is off until you start."_s);
        QCOMPARE(controller.activeAppName(), u"Unknown"_s);
        QCOMPARE(controller.authStatusText(),
                 u"Create an account to sync progress, or continue as Guest for local-only use."_s);
        QCOMPARE(controller.quizFeedback(), u"Add cards, then answer them during a study session."_s);
        QCOMPARE(controller.recentEvents(), QStringList());
        QVERIFY(!controller.isBlockingActive());
        QVERIFY(!controller.hasActiveStudyCard());
        QVERIFY(!controller.hasSignedInEmail());
    }

    void everyCountStartsAtZeroAndEverySwitchOff()
    {
        ControllerHarness harness;
        const auto &controller = harness.start();
        const auto &object = QuorvelController::staticMetaObject;
        QSet<QByteArray> begun; // with something else, which other tests know
        for (int index = object.propertyOffset(); index < object.propertyCount(); ++index) {
            const auto property = object.property(index);
            const auto value = property.read(&controller);
            if (property.metaType() == QMetaType::fromType<bool>() && value.toBool())
                begun.insert(property.name());
            else if (property.metaType() == QMetaType::fromType<qint64>() && value.toLongLong() != 0)
                begun.insert(property.name());
        }
        QCOMPARE(begun, QSet<QByteArray>({"studyRemaining", "canStartStudy"}));
        QCOMPARE(controller.sessionProgress(), 0.0);
    }

    void startingWithDefaultsWritesNothing()
    {
        ControllerHarness harness;
        harness.start();
        harness.seconds(5);
        QVERIFY(harness.files.steps.empty());
        QVERIFY(harness.preferences.writes.empty());
    }

    void everyObservedFieldIsABindableProperty_data()
    {
        QTest::addColumn<QByteArray>("field");
        for (const auto *field : {"mode",
                                  "studyRemaining",
                                  "breakRemaining",
                                  "todayStudySeconds",
                                  "completedSessions",
                                  "activeAppName",
                                  "idleSeconds",
                                  "blockedRunningAppNames",
                                  "statusMessage",
                                  "recentEvents",
                                  "currentSessionCardProofCount",
                                  "quizFeedback",
                                  "aiOutputText",
                                  "isAICoachRunning",
                                  "newStudyTaskText",
                                  "currentStudyTopicText",
                                  "newCardTopicText",
                                  "newCardPromptText",
                                  "newCardAnswerText",
                                  "quizAnswerText",
                                  "aiPromptText",
                                  "studyMinutesText",
                                  "breakMinutesText",
                                  "maxIdleSecondsText",
                                  "requiredProofsText",
                                  "blockedAppsText",
                                  "blockedDomainsText",
                                  "allowedStudyDomainsText",
                                  "allowedStudyAppsText",
                                  "language",
                                  "proModeEnabled",
                                  "accessMode",
                                  "authStatusText",
                                  "authEmailText",
                                  "authCodeText"})
            QTest::newRow(field) << QByteArray(field);
    }
    void everyObservedFieldIsABindableProperty()
    {
        QFETCH(QByteArray, field);
        const auto &object = QuorvelController::staticMetaObject;
        const auto property = object.property(object.indexOfProperty(field));
        QVERIFY(property.isValid());
        QVERIFY(property.isBindable());
        QVERIFY(property.hasNotifySignal());
        QCOMPARE(property.isWritable(),
                 field.endsWith("Text") && field != "aiOutputText" && field != "authStatusText");
    }

    void defaultSessionOpensTheBreakOnItsLastSecond()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy(); // counts the first second at once
        harness.seconds(1498);
        QCOMPARE(controller.mode(), Mode::Studying);
        QCOMPARE(controller.studyRemaining(), 1);
        harness.seconds(1);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.breakRemaining(), 2700);
        QCOMPARE(controller.completedSessions(), 1);
        QCOMPARE(controller.todayStudySeconds(), 1500);
        QCOMPARE(controller.userProgress().totalXP, 50);
        QCOMPARE(controller.userProgress().totalFocusSeconds, 1500);
        QCOMPARE(controller.userProgress().totalCompletedSessions, 1);
        QCOMPARE(controller.statusMessage(), u"Break unlocked."_s);
        QCOMPARE(harness.events().mid(0, 3),
                 QStringList({u"Study session completed. Break unlocked."_s,
                              u"+25 XP. Study session completed."_s, u"+1 XP. Focused for one minute."_s}));
        QCOMPARE(harness.storedProgress(), controller.userProgress());
    }

    void startCountsItsFirstSecondAtOnce()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        QCOMPARE(controller.studyRemaining(), 1499);
        QCOMPARE(controller.todayStudySeconds(), 1);
        QCOMPARE(controller.statusMessage(), u"Counting study time. Card proof: Off. Active app: Anki."_s);
        QCOMPARE(harness.events(), QStringList({u"Study session started."_s}));
    }

    void zeroStudyMinutesStillRunAMinute()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(0));
        QCOMPARE(controller.studyRemaining(), 0);
        controller.startStudy();
        QCOMPARE(controller.studyRemaining(), 59);
        controller.lockNow();
        QCOMPARE(controller.studyRemaining(), 0);
        controller.startStudy();
        controller.stopQuorvel();
        QCOMPARE(controller.studyRemaining(), 0);
        controller.unlockManualBreak(1);
        harness.seconds(60);
        QCOMPARE(controller.mode(), Mode::Ready);
        QCOMPARE(controller.studyRemaining(), 0);
    }

    void negativeMinutesRunAMinute()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(-7, -7));
        QCOMPARE(controller.studyRemaining(), -420);
        controller.startStudy();
        harness.seconds(59);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.breakRemaining(), 60);
    }

    void manualBreakLastsAtLeastAMinute_data()
    {
        QTest::addColumn<qint64>("minutes");
        QTest::addColumn<qint64>("seconds");
        QTest::newRow("none") << qint64{0} << qint64{60};
        QTest::newRow("negative") << qint64{-3} << qint64{60};
        QTest::newRow("as offered") << qint64{15} << qint64{900};
    }
    void manualBreakLastsAtLeastAMinute()
    {
        QFETCH(qint64, minutes);
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.unlockManualBreak(minutes);
        QTEST(controller.breakRemaining(), "seconds");
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.statusMessage(), u"Manual break is active."_s);
        QCOMPARE(harness.events(), QStringList({u"Manual break started."_s}));
    }

    void manualBreakTicksOnlyWithTheNextHeartbeat()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.unlockManualBreak(1);
        QCOMPARE(controller.breakRemaining(), 60);
        harness.seconds(1);
        QCOMPARE(controller.breakRemaining(), 59);
        QCOMPARE(controller.statusMessage(), u"Break is active. Entertainment is allowed."_s);
    }

    void manualBreakGivesUpARunningSession()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(100);
        const auto progress = controller.userProgress();
        controller.unlockManualBreak(15);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.studyRemaining(), 1500);
        QCOMPARE(controller.completedSessions(), 0);
        QCOMPARE(controller.userProgress(), progress);
    }

    void breakEndsInReady()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.unlockManualBreak(1);
        harness.seconds(59);
        QCOMPARE(controller.mode(), Mode::BreakTime);
        harness.seconds(1);
        QCOMPARE(controller.mode(), Mode::Ready);
        QCOMPARE(controller.studyRemaining(), 1500);
        QCOMPARE(controller.statusMessage(), u"Break ended. Blocking is off until you start again."_s);
        QCOMPARE(harness.events().first(), u"Break ended. Returned to Ready."_s);
        harness.seconds(1);
        QCOMPARE(controller.statusMessage(), u"Ready. Blocking is off until you start."_s);
    }

    void pausedSecondMovesNothing()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(58); // 59 counted; the next one would earn XP
        harness.idle.since = std::chrono::seconds(181);
        harness.seconds(10);
        QCOMPARE(controller.studyRemaining(), 1441);
        QCOMPARE(controller.todayStudySeconds(), 59);
        QCOMPARE(controller.userProgress().totalXP, 0);
        QCOMPARE(controller.statusMessage(), u"Paused: Mac is idle for 181s."_s);
        harness.idle.since = std::chrono::seconds(0);
        harness.seconds(1);
        QCOMPARE(controller.userProgress().totalXP, 1);
    }

    void startIsRefusedWithoutEnoughCards()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(1, 5, 2));
        controller.startStudy();
        QCOMPARE(controller.mode(), Mode::Ready);
        QCOMPARE(controller.studyRemaining(), 60);
        QCOMPARE(controller.statusMessage(), u"Need 2 more matching cards, or set card proofs to 0."_s);
        QCOMPARE(
            harness.events(),
            QStringList({u"Study start blocked: Need 2 more matching cards, or set card proofs to 0."_s}));
    }

    void waitsForProofsAtClockZeroForAsLongAsItTakes()
    {
        ProofSession session;
        auto &controller = *session.controller;
        session.seconds(3600);
        QCOMPARE(controller.mode(), Mode::Studying);
        QCOMPARE(controller.studyRemaining(), 0);
        QCOMPARE(controller.todayStudySeconds(), 60);
        QVERIFY(controller.isBlockingActive());
        QCOMPARE(controller.statusMessage(), u"Timer done. Solve 2 more unique cards to unlock break."_s);
        session.answerRightly();
        QCOMPARE(controller.statusMessage(), u"Timer done. Solve 1 more unique card to unlock break."_s);
        session.seconds(1);
        QCOMPARE(controller.statusMessage(), u"Timer done. Solve 1 more unique card to unlock break."_s);
        session.answerRightly();
        QCOMPARE(controller.mode(), Mode::BreakTime);
        QCOMPARE(controller.statusMessage(), u"Break unlocked."_s);
        QCOMPARE(controller.currentSessionCardProofCount(), 0);
        QCOMPARE(controller.completedSessions(), 1);
    }

    void pausedSecondAtClockZeroShowsTheProofWait()
    {
        ProofSession session;
        session.seconds(60);
        session.applications.leaveFrontEmpty();
        session.seconds(1);
        QCOMPARE(session.controller->statusMessage(),
                 u"Timer done. Solve 2 more unique cards to unlock break."_s);
    }

    void proofsGivenWhilePausedAtClockZeroOpenTheBreak()
    {
        ProofSession session;
        session.seconds(60);
        session.applications.leaveFrontEmpty();
        session.seconds(1);
        session.answerRightly();
        QCOMPARE(session.controller->mode(), Mode::Studying);
        session.answerRightly();
        QCOMPARE(session.controller->mode(), Mode::BreakTime);
    }

    void proofsGivenWhileTheClockRunsOpenTheBreakOnItsLastSecond()
    {
        ProofSession session;
        session.answerRightly();
        session.answerRightly();
        QCOMPARE(session.controller->mode(), Mode::Studying);
        session.seconds(1);
        QCOMPARE(session.controller->statusMessage(),
                 u"Counting study time. Card proof: 2/2. Active app: Anki."_s);
        session.seconds(58);
        QCOMPARE(session.controller->mode(), Mode::BreakTime);
        QCOMPARE(session.controller->statusMessage(), u"Break unlocked."_s);
    }

    void leavingASessionForgetsItsProofs()
    {
        for (const auto leave : {&QuorvelController::lockNow, &QuorvelController::stopQuorvel}) {
            ProofSession session;
            session.answerRightly();
            QCOMPARE(session.controller->currentSessionCardProofCount(), 1);
            (session.controller.get()->*leave)();
            QCOMPARE(session.controller->currentSessionCardProofCount(), 0);
        }
    }

    void startReasonStandsInTheInterfaceLanguageInsideAnEnglishEvent()
    {
        ControllerHarness harness;
        harness.preferences.values[u"language"_s] = u"ru"_s;
        auto &controller = harness.startWith(ControllerHarness::config(1, 5, 1));
        controller.startStudy();
        QCOMPARE(harness.events(),
                 QStringList({u"Study start blocked: Не хватает карточек: 1. Или поставь пруфы 0."_s}));
    }

    void secondStartIsRefused()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(10);
        controller.startStudy();
        QCOMPARE(controller.studyRemaining(), 1489);
        QCOMPARE(controller.statusMessage(), u"Study session is already running."_s);
        QCOMPARE(harness.events().first(), u"Study start blocked: Study session is already running."_s);
    }

    void startFromLockedAndFromBreak()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.lockNow();
        controller.startStudy();
        QCOMPARE(controller.mode(), Mode::Studying);
        controller.unlockManualBreak(15);
        controller.startStudy();
        QCOMPARE(controller.mode(), Mode::Studying);
        QCOMPARE(controller.breakRemaining(), 0);
        QCOMPARE(controller.studyRemaining(), 1499);
    }

    void lockReplacesItsTextWithinTheCall()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(30);
        controller.lockNow();
        QCOMPARE(controller.mode(), Mode::Locked);
        QVERIFY(controller.isBlockingActive());
        QCOMPARE(controller.studyRemaining(), 1500);
        QCOMPARE(controller.statusMessage(), u"Manual lock is active. Start Study to run a timed session."_s);
        QCOMPARE(harness.events().first(), u"Locked manually."_s);
    }

    void stopReturnsToReady()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.lockNow();
        controller.stopQuorvel();
        QCOMPARE(controller.mode(), Mode::Ready);
        QVERIFY(!controller.isBlockingActive());
        QCOMPARE(controller.statusMessage(), u"Ready. Blocking is off until you start."_s);
        QCOMPARE(harness.events().first(), u"Quorvel stopped. Blocking is off."_s);
    }

    void remainderOfXPDoesNotReachTheNextSession()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.startStudy();
        harness.seconds(58);
        controller.stopQuorvel();
        controller.startStudy();
        harness.seconds(58);
        QCOMPARE(controller.userProgress().totalXP, 0);
        harness.seconds(1);
        QCOMPARE(controller.userProgress().totalXP, 1);
    }

    void transientStatusLastsUntilTheNextHeartbeat()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(1, 1, 3));
        controller.startStudy();
        QVERIFY(controller.statusMessage().startsWith(u"Need 3"));
        harness.seconds(1);
        QCOMPARE(controller.statusMessage(), u"Ready. Blocking is off until you start."_s);
    }

    void ninthEventPushesOutTheOldest()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        for (int number = 1; number <= 9; ++number)
            controller.addEvent(u"event %1"_s.arg(number));
        QCOMPARE(harness.events().size(), 8);
        QCOMPARE(harness.events().first(), u"event 9"_s);
        QCOMPARE(harness.events().last(), u"event 2"_s);
    }

    void eventTimeFollowsTheLocale_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("expected");
        QTest::newRow("United States") << QLocale(QLocale::English, QLocale::UnitedStates) << u"3:45:12 PM"_s;
        QTest::newRow("Russia") << QLocale(QLocale::Russian, QLocale::Russia) << u"15:45:12"_s;
        QTest::newRow("Germany") << QLocale(QLocale::German, QLocale::Germany) << u"15:45:12"_s;
        QTest::newRow("Spain") << QLocale(QLocale::Spanish, QLocale::Spain) << u"15:45:12"_s;
        QTest::newRow("Denmark") << QLocale(QLocale::Danish, QLocale::Denmark) << u"15.45.12"_s;
        QTest::newRow("Nigeria") << QLocale(QLocale::Yoruba, QLocale::Nigeria) << u"15:45:12"_s;
        QTest::newRow("C") << QLocale::c() << u"15:45:12"_s;
    }
    void eventTimeFollowsTheLocale()
    {
        QFETCH(QLocale, locale);
        QTEST(eventTimeText(QTime(15, 45, 12), locale), "expected");
    }

    void heartbeatRunsOnItsOwnOnceASecond()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QSignalSpy renamed(&controller, &QuorvelController::activeAppNameChanged);
        QVERIFY(renamed.wait(1500)); // the first heartbeat finds Anki in front
        QCOMPARE(controller.activeAppName(), u"Anki"_s);
    }

    void controllerThatIsGoneGetsNoHeartbeat()
    {
        ControllerHarness harness;
        harness.start();
        harness.controller.reset();
        QTest::qWait(1100);
        QVERIFY(harness.preferences.writes.empty());
    }

    void overflowingMinutesEndTheProgram()
    {
        ControllerHarness harness;
        harness.storeConfig(ControllerHarness::config(std::numeric_limits<qint64>::max()));
        QVERIFY(messageOfAbort([&] { harness.start(); }).contains("study minutes"));

        ControllerHarness other;
        auto &controller = other.start();
        QVERIFY(messageOfAbort([&] {
                    controller.unlockManualBreak(std::numeric_limits<qint64>::max());
                }).contains("break minutes"));
    }

    void overflowingCountersEndTheProgram()
    {
        ControllerHarness harness;
        UserProgress progress;
        progress.totalFocusSeconds = std::numeric_limits<qint64>::max();
        harness.storeProgress(progress);
        auto &controller = harness.start();
        QVERIFY(messageOfAbort([&] { controller.startStudy(); }).contains("total focus seconds"));
    }
};

QUORVEL_TEST(TestSession, QCoreApplication)
#include "tst_session.moc"
