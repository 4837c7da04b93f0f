#include "ControllerHarness.h"
#include "normalizeStudyAnswer.h"
#include "suite.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>

#include <algorithm>
#include <functional>
#include <set>

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;

namespace {

/// Does things to a controller in a random order, as a person, a desktop and a clock would.
class RandomUser
{
public:
    RandomUser(ControllerHarness &harness, quint32 seed)
        : m_harness(harness)
        , m_random(seed)
    {}

    void act() { m_actions[size_t(m_random.bounded(int(m_actions.size())))](); }

private:
    QuorvelController &controller() { return *m_harness.controller; }
    QString oneOf(const QStringList &texts) { return texts[m_random.bounded(int(texts.size()))]; }
    QString topic()
    {
        return oneOf({u""_s, u" Sums "_s, u"sums!"_s, u"Ёлка"_s, u"елка"_s, u" . "_s, u"Latin"_s});
    }
    StudyCard anyCard()
    {
        const auto &cards = controller().studyCards();
        return cards.empty() ? StudyCard() : cards[size_t(m_random.bounded(int(cards.size())))];
    }
    StudyTask anyTask()
    {
        const auto &tasks = controller().studyTasks();
        return tasks.empty() ? StudyTask() : tasks[size_t(m_random.bounded(int(tasks.size())))];
    }
    void addCard()
    {
        m_harness.addCard(oneOf({u"2 + 2"_s, u" f'(x) "_s, u"\u2028"_s, u"\U0001F9E0?"_s}),
                          oneOf({u"4"_s, u"3,5|seven"_s, u"|"_s, u" "_s, u"Ответ"_s}), topic());
    }
    void answer()
    {
        const auto expected = controller().activeStudyCardOrEmpty().expectedAnswer;
        m_harness.answer(oneOf({expected.section(u'|', 0, 0), expected, u"nonsense"_s, u""_s, u" ! "_s}));
    }
    void addTask()
    {
        controller().setNewStudyTaskText(oneOf({u"read"_s, u"  "_s, u"ещё раз"_s}));
        controller().addStudyTask();
    }
    void saveSettings()
    {
        controller().setStudyMinutesText(oneOf({u"1"_s, u"2"_s, u"x"_s, u"0"_s}));
        controller().setBreakMinutesText(oneOf({u"1"_s, u""_s, u"-9"_s}));
        controller().setRequiredProofsText(oneOf({u"0"_s, u"1"_s, u"2"_s, u"99"_s}));
        controller().setBlockedDomainsText(oneOf({u""_s, u"a.example\r\nb.example\r\na.example"_s}));
        controller().saveSettings();
    }

    ControllerHarness &m_harness;
    QRandomGenerator m_random;
    std::vector<std::function<void()>> m_actions{
        [this] { addCard(); },
        [this] { addCard(); },
        [this] { controller().deleteStudyCard(anyCard()); },
        [this] { controller().setCurrentStudyTopicText(topic()); },
        [this] { controller().selectNextStudyCard(m_random.bounded(2) == 0); },
        [this] { answer(); },
        [this] { answer(); },
        [this] { answer(); },
        [this] { controller().revealQuizAnswer(); },
        [this] { addTask(); },
        [this] { controller().completeStudyTask(anyTask()); },
        [this] { controller().reopenStudyTask(anyTask()); },
        [this] { controller().deleteStudyTask(anyTask()); },
        [this] { m_random.bounded(5) == 0 ? controller().clearCompletedTasks() : addTask(); },
        [this] { saveSettings(); },
        [this] { m_random.bounded(5) == 0 ? controller().resetDefaultSettings() : saveSettings(); },
        [this] { controller().mergeDefaultBlocklists(); },
        [this] { m_random.bounded(5) == 0 ? controller().addLocalCoachPack() : addTask(); },
        [this] { controller().startStudy(); },
        [this] { controller().startStudy(); },
        [this] { m_random.bounded(3) == 0 ? controller().stopQuorvel() : m_harness.seconds(3); },
        [this] { m_random.bounded(3) == 0 ? controller().lockNow() : m_harness.seconds(3); },
        [this] { m_random.bounded(5) == 0 ? controller().unlockManualBreak(0) : m_harness.seconds(3); },
        [this] { m_harness.seconds(m_random.bounded(130)); },
        [this] { m_harness.clock.advance(std::chrono::hours(m_random.bounded(40))); },
        [this] {
            controller().setLanguage(m_random.bounded(2) ? AppLanguage::English : AppLanguage::Russian);
        },
    };
};

qint64 countedByHand(const QuorvelController &controller)
{
    const auto topic = normalizeStudyAnswer(controller.currentStudyTopicText());
    const auto &cards = controller.studyCards();
    return std::count_if(cards.begin(), cards.end(), [&](const StudyCard &card) {
        return topic.isEmpty() || normalizeStudyAnswer(card.topic.value_or(QString())) == topic;
    });
}

void checkSession(ControllerHarness &harness)
{
    const auto &controller = *harness.controller;
    const bool blocks = controller.mode() == Mode::Studying || controller.mode() == Mode::Locked;
    QCOMPARE(controller.isBlockingActive(), blocks);
    QVERIFY(controller.studyRemaining() >= 0);
    QVERIFY(controller.breakRemaining() >= 0);
    QVERIFY((controller.breakRemaining() > 0) == (controller.mode() == Mode::BreakTime));
    QVERIFY(controller.mode() == Mode::Studying || controller.currentSessionCardProofCount() == 0);
    QVERIFY(controller.recentEvents().size() <= 8);
    QVERIFY(controller.sessionProgress() >= 0 && controller.sessionProgress() <= 1);
    // At zero with enough proofs, as when the settings now ask for fewer, the next heartbeat opens the break.
    if (controller.mode() == Mode::Studying && controller.studyRemaining() == 0 &&
        controller.currentSessionCardProofCount() >= controller.requiredProofsToUnlock()) {
        harness.seconds(1);
        QCOMPARE(controller.mode(), Mode::BreakTime);
    }
}

void checkContent(const QuorvelController &controller)
{
    const auto matching = countedByHand(controller);
    QCOMPARE(controller.topicCardCount(), matching);
    QCOMPARE(qint64(controller.cardsMatchingCurrentTopic().size()), matching);
    const auto required = controller.requiredProofsToUnlock();
    QCOMPARE(controller.canStartStudy(),
             controller.mode() != Mode::Studying && (required == 0 || matching >= required));
    QCOMPARE(controller.completedTaskCount(), qint64(controller.completedStudyTasks().size()));
    std::set<QUuid> ids;
    for (const auto &card : controller.studyCards()) {
        ids.insert(card.id);
        QVERIFY(!card.prompt.isEmpty() && card.prompt == card.prompt.trimmed());
        QVERIFY(!card.expectedAnswer.isEmpty() && (!card.topic || !card.topic->isEmpty()));
        QVERIFY(card.lastAskedAt.has_value() == (card.correctCount + card.wrongCount > 0));
        QVERIFY(card.lastCorrectAt.has_value() == (card.correctCount > 0));
    }
    QCOMPARE(ids.size(), controller.studyCards().size());
    const auto &config = controller.config();
    QVERIFY(config.studyMinutes >= 1 && config.studyMinutes <= 240);
    QVERIFY(config.requiredProofsToUnlock >= 0 && config.requiredProofsToUnlock <= 20);
    const auto &progress = controller.userProgress();
    QVERIFY(progress.longestStreak >= progress.currentStreak);
    QVERIFY(progress.totalXP >= 10 * progress.totalCardProofs + 25 * progress.totalCompletedSessions);
}

/// What is stored is what a second start works with; only seconds that have not earned their XP yet may be
/// missing from the progress.
void checkNextStart(ControllerHarness &harness)
{
    const auto cards = harness.controller->studyCards();
    const auto tasks = harness.controller->studyTasks();
    const auto config = harness.controller->config();
    auto progress = harness.controller->userProgress();
    const auto today = harness.controller->todayStudySeconds();
    const auto topic = harness.controller->currentStudyTopicText();
    const auto &next = harness.start();
    QCOMPARE(next.studyCards(), cards);
    QCOMPARE(next.studyTasks(), tasks);
    QCOMPARE(next.config(), config);
    QVERIFY(progress.totalFocusSeconds >= next.userProgress().totalFocusSeconds);
    progress.totalFocusSeconds = next.userProgress().totalFocusSeconds;
    QCOMPARE(next.userProgress(), progress);
    QVERIFY(today >= next.todayStudySeconds());
    harness.controller->setCurrentStudyTopicText(topic);
}

} // namespace

class TestRandomOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void invariantsHoldAndNothingIsLost_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 12; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    void invariantsHoldAndNothingIsLost()
    {
        QFETCH(quint32, seed);
        ControllerHarness harness;
        harness.start();
        RandomUser user(harness, seed);
        for (int step = 0; step < 400; ++step) {
            const QAbstractItemModelTester cards(harness.controller->studyCardModel());
            const QAbstractItemModelTester tasks(harness.controller->studyTaskModel());
            user.act();
            checkSession(harness);
            checkContent(*harness.controller);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(u"after step %1"_s.arg(step)));
            if (step % 50 == 49)
                checkNextStart(harness);
        }
        QVERIFY(harness.controller->userProgress().totalXP > 0);
    }
};

QUORVEL_TEST(TestRandomOperations, QCoreApplication)
#include "tst_randomOperations.moc"
