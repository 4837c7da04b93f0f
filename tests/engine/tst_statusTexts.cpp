#include "ControllerHarness.h"
#include "formatDuration.h"
#include "statusTexts.h"
#include "suite.h"

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;

namespace {

constexpr auto english = AppLanguage::English;
constexpr auto russian = AppLanguage::Russian;

} // namespace

class TestStatusTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void durations_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << qint64{0} << u"00:00"_s;
        QTest::newRow("negative") << qint64{-5} << u"00:00"_s;
        QTest::newRow("largest negative") << std::numeric_limits<qint64>::min() << u"00:00"_s;
        QTest::newRow("minute") << qint64{59} << u"00:59"_s;
        QTest::newRow("session") << qint64{1500} << u"25:00"_s;
        QTest::newRow("below an hour") << qint64{3599} << u"59:59"_s;
        QTest::newRow("an hour") << qint64{3600} << u"1:00:00"_s;
        QTest::newRow("more") << qint64{3909} << u"1:05:09"_s;
        QTest::newRow("ten hours") << qint64{36000} << u"10:00:00"_s;
        QTest::newRow("largest") << std::numeric_limits<qint64>::max() << u"2562047788015215:30:07"_s;
    }
    void durations()
    {
        QFETCH(qint64, seconds);
        QTEST(formatDuration(seconds), "text");
    }

    void canStart_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<int>("required");
        QTest::addColumn<int>("matching");
        QTest::addColumn<bool>("can");
        QTest::newRow("ready, no proofs") << Mode::Ready << 0 << 0 << true;
        QTest::newRow("locked, no proofs") << Mode::Locked << 0 << 0 << true;
        QTest::newRow("break, no proofs") << Mode::BreakTime << 0 << 0 << true;
        QTest::newRow("studying") << Mode::Studying << 0 << 9 << false;
        QTest::newRow("too few cards") << Mode::Ready << 2 << 1 << false;
        QTest::newRow("enough cards") << Mode::Ready << 2 << 2 << true;
        QTest::newRow("break, too few cards") << Mode::BreakTime << 2 << 1 << false;
        QTest::newRow("negative") << Mode::Ready << -1 << 0 << true;
    }
    void canStart()
    {
        QFETCH(Mode, mode);
        QFETCH(int, required);
        QFETCH(int, matching);
        QTEST(StatusTexts::canStartStudy(mode, required, matching), "can");
    }

    void startReadiness_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<int>("required");
        QTest::addColumn<int>("matching");
        QTest::addColumn<QString>("inEnglish");
        QTest::addColumn<QString>("inRussian");
        QTest::newRow("studying") << Mode::Studying << 2 << 0 << u"Study session is already running."_s
                                  << u"Учебная сессия уже идёт."_s;
        QTest::newRow("break") << Mode::BreakTime << 2 << 0
                               << u"Break is active. You can start another study session when ready."_s
                               << u"Отдых активен. Новую учебную сессию можно начать, когда будешь готов."_s;
        QTest::newRow("no proofs") << Mode::Ready << 0 << 0
                                   << u"Ready. Proof is off, so the timer alone unlocks a break."_s
                                   << u"Готово. Пруф выключен, отдых откроет только таймер."_s;
        QTest::newRow("one card") << Mode::Locked << 1 << 1 << u"Ready. 1 matching card available."_s
                                  << u"Готово. Подходящих карточек: 1."_s;
        QTest::newRow("more cards") << Mode::Ready << 1 << 12 << u"Ready. 12 matching cards available."_s
                                    << u"Готово. Подходящих карточек: 12."_s;
        QTest::newRow("one missing") << Mode::Ready << 2 << 1
                                     << u"Need 1 more matching card, or set card proofs to 0."_s
                                     << u"Не хватает карточек: 1. Или поставь пруфы 0."_s;
        QTest::newRow("more missing")
            << Mode::Locked << 5 << 2 << u"Need 3 more matching cards, or set card proofs to 0."_s
            << u"Не хватает карточек: 3. Или поставь пруфы 0."_s;
    }
    void startReadiness()
    {
        QFETCH(Mode, mode);
        QFETCH(int, required);
        QFETCH(int, matching);
        QTEST(StatusTexts::startReadiness(mode, required, matching, english), "inEnglish");
        QTEST(StatusTexts::startReadiness(mode, required, matching, russian), "inRussian");
    }

    void studyStart()
    {
        QCOMPARE(StatusTexts::studyStart(1, english),
                 u"Study timer is running. Solve 1 unique card to unlock a break."_s);
        QCOMPARE(StatusTexts::studyStart(3, english),
                 u"Study timer is running. Solve 3 unique cards to unlock a break."_s);
        QCOMPARE(StatusTexts::studyStart(3, russian),
                 u"Учебный таймер идёт. Реши уникальных карточек: 3, чтобы открыть отдых."_s);
        QCOMPARE(StatusTexts::studyStart(0, english),
                 u"Study timer is running. Proofs are disabled; the timer alone unlocks a break."_s);
        QCOMPARE(StatusTexts::studyStart(0, russian),
                 u"Учебный таймер идёт. Пруфы выключены; отдых откроет только таймер."_s);
    }

    void proofWait()
    {
        QCOMPARE(StatusTexts::proofWait(2, 1, english),
                 u"Timer done. Solve 1 more unique card to unlock break."_s);
        QCOMPARE(StatusTexts::proofWait(3, 1, english),
                 u"Timer done. Solve 2 more unique cards to unlock break."_s);
        QCOMPARE(StatusTexts::proofWait(3, 1, russian),
                 u"Таймер завершён. Реши ещё карточек: 2, чтобы открыть отдых."_s);
        for (const auto required : {0, 3}) {
            QCOMPARE(StatusTexts::proofWait(required, 3, english), u"Timer done. Break is ready."_s);
            QCOMPARE(StatusTexts::proofWait(required, 3, russian), u"Таймер завершён. Отдых готов."_s);
        }
    }

    void proofProgressAndPolicy()
    {
        QCOMPARE(StatusTexts::proofProgress(3, 1, english), u"1/3"_s);
        QCOMPARE(StatusTexts::proofProgress(0, 1, english), u"Off"_s);
        QCOMPARE(StatusTexts::proofProgress(0, 1, russian), u"Выкл"_s);
        QCOMPARE(StatusTexts::proofPolicy(1, english), u"1 card"_s);
        QCOMPARE(StatusTexts::proofPolicy(3, english), u"3 cards"_s);
        QCOMPARE(StatusTexts::proofPolicy(3, russian), u"Карточек: 3"_s);
        QCOMPARE(StatusTexts::proofPolicy(0, english), u"Timer only"_s);
        QCOMPARE(StatusTexts::proofPolicy(0, russian), u"Только таймер"_s);
    }

    void sessionProgress()
    {
        QCOMPARE(StatusTexts::sessionProgress(1500, 1500), 0.0);
        QCOMPARE(StatusTexts::sessionProgress(750, 1500), 0.5);
        QCOMPARE(StatusTexts::sessionProgress(0, 1500), 1.0);
        QCOMPARE(StatusTexts::sessionProgress(60, 0), 0.0);
        QCOMPARE(StatusTexts::sessionProgress(-60, 60), 1.0);
        QCOMPARE(StatusTexts::sessionProgress(2700, 60), 0.0);
    }

    void focusSubtitle()
    {
        const auto status = u"the status line"_s;
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Ready, 0, 0, status, english),
                 u"Blocking is off. Press Start Study to arm Quorvel."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Ready, 0, 0, status, russian),
                 u"Блокировка выключена. Нажми старт, чтобы включить Quorvel."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Ready, 2, 1, status, english),
                 u"Need 1 more matching card, or set card proofs to 0."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Locked, 2, 0, status, russian),
                 u"Не хватает карточек: 2. Или поставь пруфы 0."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Locked, 2, 2, status, english),
                 u"Manual lock is active. Entertainment is blocked."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Locked, 0, 0, status, russian),
                 u"Ручная блокировка активна. Развлечения заблокированы."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::Studying, 2, 0, status, english), status);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::BreakTime, 2, 0, status, english),
                 u"Break is unlocked. Entertainment is allowed until the timer ends."_s);
        QCOMPARE(StatusTexts::focusSubtitle(Mode::BreakTime, 0, 0, status, russian),
                 u"Отдых открыт. Развлечения доступны до конца таймера."_s);
    }

    void blockedAppSummary()
    {
        const QStringList two{u"Discord"_s, u"Steam"_s};
        QCOMPARE(StatusTexts::blockedAppSummary(Mode::Studying, two, english), u"Discord, Steam"_s);
        QCOMPARE(StatusTexts::blockedAppSummary(Mode::Studying, {}, english), u"No blocked apps running"_s);
        QCOMPARE(StatusTexts::blockedAppSummary(Mode::Locked, {}, russian),
                 u"Нет запущенных блокируемых приложений"_s);
        QCOMPARE(StatusTexts::blockedAppSummary(Mode::Ready, two, english), u"Blocking off"_s);
        QCOMPARE(StatusTexts::blockedAppSummary(Mode::BreakTime, two, russian), u"Блокировка выкл"_s);
    }

    void timerTitles()
    {
        QCOMPARE(StatusTexts::primaryTimerTitle(Mode::BreakTime, english), u"Break remaining"_s);
        for (const auto mode : {Mode::Ready, Mode::Locked, Mode::Studying})
            QCOMPARE(StatusTexts::primaryTimerTitle(mode, russian), u"Учёбы осталось"_s);
    }

    void modeNames()
    {
        QCOMPARE(StatusTexts::modeName(Mode::Ready, english), u"Ready"_s);
        QCOMPARE(StatusTexts::modeName(Mode::Locked, russian), u"Блокировка"_s);
        QCOMPARE(StatusTexts::modeName(Mode::Studying, russian), u"Учёба"_s);
        QCOMPARE(StatusTexts::modeName(Mode::BreakTime, english), u"Break"_s);
    }

    void cardsAreLackingWhereFewerMatchThanAreRequired()
    {
        QVERIFY(!StatusTexts::lacksCards(0, 0));
        QVERIFY(StatusTexts::lacksCards(1, 0));
        QVERIFY(!StatusTexts::lacksCards(1, 1));
        QVERIFY(StatusTexts::lacksCards(3, 2));
    }

    void whatIsUnsavedIsNamedWithEachReasonOnce()
    {
        const QMap<QString, QString> failed{{u"tasks"_s, u"full"_s},
                                            {u"settings"_s, u"full"_s},
                                            {u"progress"_s, u"read-only"_s},
                                            {u"cards"_s, u"full"_s}};
        QCOMPARE(
            StatusTexts::unsaved(failed, english),
            u"Could not save: cards, progress, settings, tasks (full; read-only). Quorvel keeps what you "
            "did and tries again with the next change; do not quit before that works."_s);
        QCOMPARE(
            StatusTexts::unsaved(failed, russian),
            u"Не удалось сохранить: карточки, прогресс, настройки, задачи (full; read-only). Quorvel помнит "
            "всё сделанное и попробует снова при следующем изменении; не выключай его до этого."_s);
        QCOMPARE(StatusTexts::unsaved({}, russian), QString());
    }

    void derivedFieldsFollowTheState()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QCOMPARE(controller.primaryTimerText(), u"25:00"_s);
        QCOMPARE(controller.proofPolicyText(), u"Timer only"_s);
        QCOMPARE(controller.sessionProgress(), 0.0);
        QVERIFY(controller.canStartStudy());

        controller.startStudy();
        harness.seconds(749);
        QCOMPARE(controller.sessionProgress(), 0.5);
        QCOMPARE(controller.primaryTimerText(), u"12:30"_s);
        QCOMPARE(controller.focusSubtitle(), controller.statusMessage());
        QVERIFY(!controller.canStartStudy());

        controller.unlockManualBreak(15);
        QCOMPARE(controller.primaryTimerTitle(), u"Break remaining"_s);
        QCOMPARE(controller.primaryTimerText(), u"15:00"_s);

        controller.stopQuorvel();
        QCOMPARE(controller.sessionProgress(), 0.0);
    }

    void lengthenedSessionStartsAtProgressZero()
    {
        ControllerHarness harness;
        auto &controller = harness.startWith(ControllerHarness::config(0));
        controller.startStudy();
        QCOMPARE(controller.sessionProgress(), 0.0);
    }

    void changeSignalsComeOnlyWithChanges()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.seconds(2);
        int signals = 0;
        for (const auto signal :
             {&QuorvelController::statusMessageChanged, &QuorvelController::startReadinessTextChanged,
              &QuorvelController::focusSubtitleChanged, &QuorvelController::modeChanged,
              &QuorvelController::primaryTimerTextChanged, &QuorvelController::activeAppNameChanged,
              &QuorvelController::blockedRunningAppNamesChanged})
            connect(&controller, signal, this, [&] { ++signals; });
        harness.seconds(10);
        QCOMPARE(signals, 0);
    }
};

QUORVEL_TEST(TestStatusTexts, QCoreApplication)
#include "tst_statusTexts.moc"
