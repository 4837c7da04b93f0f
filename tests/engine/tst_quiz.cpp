#include "ControllerHarness.h"
#include "suite.h"

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;

namespace {

/// Three cards on sums, a session that asks for `proofs` of them.
struct Quiz : ControllerHarness
{
    explicit Quiz(qint64 proofs = 2, std::deque<StudyCard> cards = sums(3), qint64 studyMinutes = 25)
    {
        storeCards(cards);
        startWith(config(studyMinutes, 45, proofs));
    }
    static std::deque<StudyCard> sums(int count)
    {
        std::deque<StudyCard> cards;
        for (int number = 1; number <= count; ++number) {
            cards.push_back(card(u"1 + %1"_s.arg(number), QString::number(number + 1) + u"|n%1"_s.arg(number),
                                 u"Sums"_s));
            cards.back().createdAt = cards.back().createdAt.addSecs(number);
        }
        return cards;
    }
    QString asked() const { return controller->activeStudyCardOrEmpty().prompt; }
    const StudyCard &cardOf(const QString &prompt) const
    {
        const auto &cards = controller->studyCards();
        return *std::find_if(cards.begin(), cards.end(),
                             [&](const StudyCard &card) { return card.prompt == prompt; });
    }
};

const QDateTime askedFirst(QDate(2026, 10, 1), QTime(8, 0), Qt::UTC);
const QDateTime askedLater(QDate(2026, 10, 2), QTime(8, 0), Qt::UTC);

} // namespace

class TestQuiz : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Selection

    void theWeakestCardIsAskedAtStart()
    {
        auto cards = Quiz::sums(3);
        cards[1].wrongCount = 1;
        Quiz quiz(2, cards);
        QCOMPARE(quiz.asked(), u"1 + 2"_s);
        QCOMPARE(quiz.controller->quizFeedback(), u"Add cards, then answer them during a study session."_s);
        QVERIFY(quiz.controller->recentEvents().isEmpty());
    }

    void theOrderOfAsking_data()
    {
        QTest::addColumn<StudyCard>("first");
        QTest::addColumn<StudyCard>("second");
        auto plain = ControllerHarness::card(u"plain"_s, u"1"_s);
        auto other = plain;
        other.id = QUuid::createUuid();
        const auto with = [](StudyCard card, auto change) {
            change(card);
            return card;
        };
        const auto asked = [&](const QDateTime &when) {
            return with(plain, [&](StudyCard &card) { card.lastAskedAt = when; });
        };
        QTest::newRow("more wrong answers come before fewer right ones")
            << with(plain, [](StudyCard &card) { card.wrongCount = 2, card.correctCount = 9; })
            << with(other, [](StudyCard &card) { card.wrongCount = 1; });
        QTest::newRow("fewer right answers come before never asked")
            << asked(askedLater) << with(other, [](StudyCard &card) { card.correctCount = 1; });
        QTest::newRow("never asked, though younger")
            << with(other, [](StudyCard &card) { card.createdAt = card.createdAt.addYears(1); })
            << asked(askedFirst);
        QTest::newRow("asked longer ago") << asked(askedFirst) << asked(askedLater);
        QTest::newRow("both never asked: the older one")
            << plain << with(other, [](StudyCard &card) { card.createdAt = card.createdAt.addSecs(1); });
    }
    void theOrderOfAsking()
    {
        QFETCH(StudyCard, first);
        QFETCH(StudyCard, second);
        first.id = QUuid::createUuid();
        first.prompt = u"first"_s;
        second.prompt = u"second"_s;
        QCOMPARE(Quiz(2, {first, second}).asked(), u"first"_s);
        QCOMPARE(Quiz(2, {second, first}).asked(), u"first"_s);
    }

    void pickingAgainWithoutAnAnswerShowsTheSameCard()
    {
        Quiz quiz;
        const auto asked = quiz.asked();
        quiz.controller->selectNextStudyCard(true);
        QCOMPARE(quiz.asked(), asked);
        QCOMPARE(quiz.controller->quizFeedback(), u"Next card selected."_s);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->selectNextStudyCard(true);
        QCOMPARE(quiz.controller->quizFeedback(), u"Следующая карточка выбрана."_s);
    }

    void pickingClearsAnswerAndRevealedAnswer()
    {
        Quiz quiz;
        quiz.controller->setQuizAnswerText(u"half"_s);
        quiz.controller->revealQuizAnswer();
        quiz.controller->selectNextStudyCard(false);
        QCOMPARE(quiz.controller->quizAnswerText(), QString());
        QVERIFY(!quiz.controller->hasQuizRevealedAnswer());
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Answer revealed. Type it from memory on the next attempt to count proof."_s);
    }

    void withoutCardsOfTheTopicThePickSaysWhy_data()
    {
        QTest::addColumn<QString>("topic");
        QTest::addColumn<bool>("log");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("russian");
        const auto initial = u"Add cards, then answer them during a study session."_s;
        const auto initialRussian = u"Добавь карточки, затем отвечай на них во время учёбы."_s;
        const auto none = u"No cards match the current study topic."_s;
        const auto noneRussian = u"Нет карточек по текущей теме."_s;
        QTest::newRow("no topic, picked") << u"  "_s << true << initial << initialRussian;
        QTest::newRow("no topic, by itself") << QString() << false << initial << initialRussian;
        QTest::newRow("topic, picked") << u"Latin"_s << true << none << noneRussian;
        QTest::newRow("topic, by itself") << u"Latin"_s << false << none << noneRussian;
        QTest::newRow("a topic of which nothing is left") << u" ! "_s << true << none << noneRussian;
    }
    void withoutCardsOfTheTopicThePickSaysWhy()
    {
        QFETCH(QString, topic);
        QFETCH(bool, log);
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setCurrentStudyTopicText(topic);
        controller.setQuizAnswerText(u"kept"_s);
        controller.selectNextStudyCard(log);
        QTEST(controller.quizFeedback(), "english");
        QVERIFY(!controller.hasActiveStudyCard());
        QCOMPARE(controller.quizAnswerText(), u"kept"_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.selectNextStudyCard(log);
        QTEST(controller.quizFeedback(), "russian");
    }

    void aPickWithoutCardsTakesTheShownCardAway()
    {
        Quiz quiz;
        quiz.controller->revealQuizAnswer();
        quiz.controller->setCurrentStudyTopicText(u"Latin"_s);
        QVERIFY(quiz.controller->hasActiveStudyCard()); // a change of the topic alone picks nothing
        quiz.controller->selectNextStudyCard(true);
        QVERIFY(!quiz.controller->hasActiveStudyCard());
        QVERIFY(!quiz.controller->hasQuizRevealedAnswer());
    }

    void countedCardsAreSkippedThoughTheyAreWeaker()
    {
        auto cards = Quiz::sums(3);
        cards[0].wrongCount = 9;
        cards[1].wrongCount = 8;
        cards[2].correctCount = 50; // the strongest
        Quiz quiz(3, cards);
        quiz.controller->startStudy();
        quiz.answerRightly();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 2);
        QCOMPARE(quiz.asked(), u"1 + 3"_s);
    }

    void whenEveryCardCountedTheWeakestComesAgainAndEarnsNothing()
    {
        auto cards = Quiz::sums(2);
        cards[1].wrongCount = 3;
        Quiz quiz(2, cards);
        quiz.controller->startStudy();
        quiz.answerRightly();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 2);
        QCOMPARE(quiz.asked(), u"1 + 2"_s);
        const auto xp = quiz.controller->userProgress().totalXP;
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Correct, but this card already counted in the current session."_s);
        QCOMPARE(quiz.events().first(), u"Card answered correctly again."_s);
        QCOMPARE(quiz.controller->userProgress().totalXP, xp);
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 2);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Верно, но эта карточка уже засчитана в текущей сессии."_s);
    }

    void startingASessionPicksACardOnlyWhereNoneIsShown()
    {
        Quiz quiz(0);
        quiz.controller->setQuizAnswerText(u"half"_s);
        quiz.controller->startStudy();
        QCOMPARE(quiz.controller->quizAnswerText(), u"half"_s);
        quiz.controller->stopQuorvel();
        quiz.controller->setCurrentStudyTopicText(u"Latin"_s);
        quiz.controller->selectNextStudyCard(true);
        QVERIFY(!quiz.controller->hasActiveStudyCard());
        quiz.controller->setCurrentStudyTopicText(QString());
        quiz.controller->startStudy();
        QVERIFY(quiz.controller->hasActiveStudyCard());
    }

    // Answers

    void withoutACardThereIsNothingToAnswer()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.answer(u"4"_s);
        QCOMPARE(controller.quizFeedback(), u"Add a card first."_s);
        QCOMPARE(controller.quizAnswerText(), u"4"_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.submitQuizAnswer();
        QCOMPARE(controller.quizFeedback(), u"Сначала добавь карточку."_s);
    }

    void anEmptyAnswerIsNotJudged()
    {
        Quiz quiz;
        quiz.answer(u" \n\u00a0"_s);
        QCOMPARE(quiz.controller->quizFeedback(), u"Type an answer first."_s);
        QVERIFY(quiz.files.steps.empty());
        QVERIFY(!quiz.controller->activeStudyCard()->lastAskedAt);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->submitQuizAnswer();
        QCOMPARE(quiz.controller->quizFeedback(), u"Сначала введи ответ."_s);
    }

    void aWrongAnswerKeepsTheTextAndShowsTheWholeExpectedOne()
    {
        Quiz quiz;
        const auto asked = quiz.asked();
        quiz.answer(u" 5 "_s);
        const auto &controller = *quiz.controller;
        QCOMPARE(controller.quizAnswerText(), u" 5 "_s);
        QCOMPARE(quiz.asked(), asked);
        QCOMPARE(controller.quizRevealedAnswer(), std::optional(u"2|n1"_s));
        QCOMPARE(controller.quizFeedback(), u"Not yet. Review the expected answer, then try another card."_s);
        QCOMPARE(quiz.events(), QStringList{u"Quiz answer was incorrect."_s});
        const auto &card = quiz.cardOf(asked);
        QCOMPARE(card.wrongCount, 1);
        QCOMPARE(card.correctCount, 0);
        QCOMPARE(card.lastAskedAt, std::optional(quiz.clock.now().toUTC()));
        QVERIFY(!card.lastCorrectAt);
        QCOMPARE(controller.activeStudyCard(), std::optional(card));
        QCOMPARE(quiz.storedCards(), controller.studyCards());
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->submitQuizAnswer();
        QCOMPARE(controller.quizFeedback(),
                 u"Пока нет. Посмотри ожидаемый ответ и попробуй другую карточку."_s);
        QCOMPARE(quiz.cardOf(asked).wrongCount, 2);
    }

    void aRightAnswerWithoutSessionCountsOnTheCardOnly()
    {
        Quiz quiz;
        const auto asked = quiz.asked();
        quiz.controller->revealQuizAnswer();
        quiz.answer(u" N1! "_s);
        const auto &controller = *quiz.controller;
        const auto &card = quiz.cardOf(asked);
        QCOMPARE(card.correctCount, 1);
        QCOMPARE(card.lastAskedAt, std::optional(quiz.clock.now().toUTC()));
        QCOMPARE(card.lastCorrectAt, card.lastAskedAt);
        QCOMPARE(controller.quizAnswerText(), QString());
        QVERIFY(!controller.hasQuizRevealedAnswer());
        QVERIFY(quiz.asked() != asked);
        QCOMPARE(controller.quizFeedback(),
                 u"Correct. Start a study session to count cards toward a break."_s);
        QCOMPARE(quiz.events(), QStringList{u"Card answered correctly outside study session."_s});
        QCOMPARE(controller.userProgress(), UserProgress());
        QCOMPARE(quiz.saves(), QStringList{u"study-cards.json"_s});
        QCOMPARE(quiz.storedCards(), controller.studyCards());
    }

    void answersOutsideStudyingNeverCount_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("ready") << int(Mode::Ready);
        QTest::newRow("locked") << int(Mode::Locked);
        QTest::newRow("break") << int(Mode::BreakTime);
    }
    void answersOutsideStudyingNeverCount()
    {
        QFETCH(int, mode);
        Quiz quiz;
        if (mode == int(Mode::Locked))
            quiz.controller->lockNow();
        else if (mode == int(Mode::BreakTime))
            quiz.controller->unlockManualBreak(15);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->setCurrentStudyTopicText(u"Latin"_s); // not even looked at
        quiz.answerRightly();
        QCOMPARE(int(quiz.controller->mode()), mode);
        QCOMPARE(quiz.events().first(), u"Card answered correctly outside study session."_s);
        QCOMPARE(quiz.controller->userProgress().totalXP, 0);
    }

    void theFeedbackOfARightAnswerStaysWhenTheNextCardComes()
    {
        Quiz quiz;
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Верно. Начни учебную сессию, чтобы карточки засчитывались для отдыха."_s);
    }

    void withProofsOffNothingIsEarned()
    {
        Quiz quiz(0);
        quiz.controller->setCurrentStudyTopicText(u"Latin"_s); // not looked at
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.events().first(), u"Card answered correctly."_s);
        QCOMPARE(quiz.controller->userProgress().totalXP, 0);
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 0);
    }

    void withProofsOffTheFeedbackSaysSo()
    {
        Quiz quiz(0);
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Correct. Proofs are disabled, so the timer alone controls the break."_s);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Верно. Пруфы выключены, отдых контролирует только таймер."_s);
    }

    void aCardOfAnotherTopicDoesNotCount_data()
    {
        QTest::addColumn<std::optional<QString>>("topic");
        QTest::newRow("another") << std::optional(u"Latin"_s);
        QTest::newRow("none") << std::optional<QString>();
        QTest::newRow("empty") << std::optional(QString());
    }
    void aCardOfAnotherTopicDoesNotCount()
    {
        QFETCH(std::optional<QString>, topic);
        auto cards = Quiz::sums(2);
        cards.push_front(ControllerHarness::card(u"stranger"_s, u"yes"_s, topic));
        cards.front().wrongCount = 1;
        Quiz quiz(2, cards);
        QCOMPARE(quiz.asked(), u"stranger"_s);
        quiz.controller->setCurrentStudyTopicText(u"sums"_s);
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Correct, but this card is not in the current study topic."_s);
        QCOMPARE(quiz.events().first(), u"Card answered correctly outside current topic."_s);
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 0);
        QCOMPARE(quiz.asked(), u"1 + 1"_s);
    }

    void aCardOfAnotherTopicIsToldInRussianToo()
    {
        auto cards = Quiz::sums(2);
        cards.push_front(ControllerHarness::card(u"stranger"_s, u"yes"_s));
        cards.front().wrongCount = 1;
        Quiz quiz(2, cards);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->setCurrentStudyTopicText(u"sums"_s);
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->quizFeedback(), u"Верно, но карточка не относится к текущей теме."_s);
    }

    void withoutATopicACardWithoutTopicCounts()
    {
        Quiz quiz(1, {ControllerHarness::card(u"free"_s, u"yes"_s)});
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
    }

    void aProofEarnsXPAndIsToldInOrder()
    {
        UserProgress progress;
        progress.totalXP = 195;
        Quiz quiz(2, Quiz::sums(3));
        quiz.storeProgress(progress);
        quiz.start();
        quiz.applications.leaveFrontEmpty(); // no second counts, so no XP but the proof's
        quiz.controller->startStudy();
        quiz.files.steps.clear();
        const auto proven = *quiz.controller->activeStudyCard();
        quiz.answerRightly();
        const auto &controller = *quiz.controller;
        QCOMPARE(controller.currentSessionCardProofCount(), 1);
        QCOMPARE(controller.userProgress().totalCardProofs, 1);
        QCOMPARE(controller.userProgress().totalXP, 205);
        QCOMPARE(controller.quizFeedback(), u"Correct. Card proof: 1/2."_s);
        QCOMPARE(quiz.events().first(4),
                 QStringList({u"Card proof completed: "_s + proven.prompt, u"+10 XP. Card proof completed."_s,
                              u"Level up: Focus Scout."_s, u"Study session started."_s}));
        QCOMPARE(quiz.storedProgress(), controller.userProgress());
        QCOMPARE(quiz.saves(), QStringList({u"study-cards.json"_s, u"progress.json"_s, u"progress.json"_s}));
        QCOMPARE(controller.mode(), Mode::Studying);
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.answerRightly();
        QCOMPARE(controller.quizFeedback(), u"Верно. Пруф карточками: 2/2."_s);
    }

    void aRevealedAnswerTypedFromTheScreenCountsLikeAnyOther()
    {
        Quiz quiz;
        quiz.controller->startStudy();
        quiz.controller->revealQuizAnswer();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
    }

    void theLastProofOpensTheBreakAtOnce()
    {
        Quiz quiz(1, Quiz::sums(2), 1);
        quiz.controller->startStudy();
        quiz.seconds(60);
        QCOMPARE(quiz.controller->mode(), Mode::Studying);
        quiz.answerRightly();
        QCOMPARE(quiz.controller->mode(), Mode::BreakTime);
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 0);
        QCOMPARE(quiz.controller->quizFeedback(), u"Correct. Card proof: 1/1."_s);
        const QStringList expected{u"Study session completed. Break unlocked."_s,
                                   u"+25 XP. Study session completed."_s, u"Card proof completed: 1 + 1"_s,
                                   u"+10 XP. Card proof completed."_s};
        QCOMPARE(quiz.events().first(4), expected);
        QCOMPARE(quiz.controller->userProgress().totalXP, 1 + 10 + 25);
        QVERIFY(quiz.controller->hasActiveStudyCard());
    }

    void proofsCountAgainInTheNextSession()
    {
        Quiz quiz(1, Quiz::sums(1));
        quiz.controller->startStudy();
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
        quiz.controller->stopQuorvel();
        quiz.controller->startStudy();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 0);
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
        QCOMPARE(quiz.controller->userProgress().totalCardProofs, 2);
    }

    void anAskedCardThatIsGoneIsNotJudged()
    {
        auto cards = Quiz::sums(2);
        Quiz quiz(2, cards);
        quiz.controller->startStudy();
        const auto gone = *quiz.controller->activeStudyCard();
        // Only the list loses it, as when something else than the delete command took it out.
        quiz.controller->studyCardModel()->removeAllOf(gone.id);
        quiz.files.steps.clear();
        const auto feedback = quiz.controller->quizFeedback();
        quiz.answer(u"2"_s);
        QVERIFY(quiz.controller->hasActiveStudyCard());
        QVERIFY(quiz.controller->activeStudyCard()->id != gone.id);
        QCOMPARE(quiz.controller->activeStudyCard()->wrongCount, 0);
        QCOMPARE(quiz.controller->activeStudyCard()->correctCount, 0);
        QVERIFY(quiz.files.steps.empty());
        QCOMPARE(quiz.controller->quizAnswerText(), QString());
        QCOMPARE(quiz.controller->quizFeedback(), feedback); // nobody asked for another card
    }

    void aDeletedCardThatCountedStillCounts()
    {
        Quiz quiz(2);
        quiz.controller->startStudy();
        const auto proven = *quiz.controller->activeStudyCard();
        quiz.answerRightly();
        quiz.controller->deleteStudyCard(proven);
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
        QCOMPARE(quiz.controller->proofProgressText(), u"1/2"_s);
    }

    void revealingShowsTheAnswerAndCountsNothing()
    {
        Quiz quiz;
        const auto before = *quiz.controller->activeStudyCard();
        quiz.controller->setQuizAnswerText(u"half"_s);
        quiz.controller->revealQuizAnswer();
        QCOMPARE(quiz.controller->quizRevealedAnswer(), std::optional(u"2|n1"_s));
        QCOMPARE(quiz.controller->activeStudyCard(), std::optional(before));
        QCOMPARE(quiz.controller->quizAnswerText(), u"half"_s);
        QVERIFY(quiz.files.steps.empty());
        QVERIFY(quiz.controller->recentEvents().isEmpty());
        quiz.controller->setLanguage(AppLanguage::Russian);
        quiz.controller->revealQuizAnswer();
        QCOMPARE(quiz.controller->quizFeedback(),
                 u"Ответ показан. В следующий раз введи его по памяти, чтобы засчитать пруф."_s);
    }

    void revealingWithoutACardSaysSo()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.revealQuizAnswer();
        QCOMPARE(controller.quizFeedback(), u"No card selected"_s);
        QVERIFY(!controller.hasQuizRevealedAnswer());
        controller.setLanguage(AppLanguage::Russian);
        controller.revealQuizAnswer();
        QCOMPARE(controller.quizFeedback(), u"Карточка не выбрана"_s);
    }

    void failedSavesAreToldAndTheProofStands()
    {
        Quiz quiz;
        quiz.controller->startStudy();
        quiz.files.writeFailure = u"No space left on device"_s;
        quiz.answerRightly();
        QCOMPARE(quiz.controller->currentSessionCardProofCount(), 1);
        QVERIFY(quiz.events().contains(u"Could not save cards: No space left on device"_s));
        QVERIFY(quiz.events().contains(u"Could not save progress: No space left on device"_s));
    }

    void theDescriptionOfTheQuizCountsProofs_data()
    {
        QTest::addColumn<qint64>("required");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("russian");
        QTest::newRow("0") << qint64(0) << u"Proof is off. The timer alone unlocks breaks."_s
                           << u"Пруф выключен. Отдых открывает только таймер."_s;
        QTest::newRow("1") << qint64(1) << u"Solve 1 unique card in the current topic."_s
                           << u"Реши уникальных карточек по теме: 1."_s;
        QTest::newRow("3") << qint64(3) << u"Solve 3 unique cards in the current topic."_s
                           << u"Реши уникальных карточек по теме: 3."_s;
    }
    void theDescriptionOfTheQuizCountsProofs()
    {
        QFETCH(qint64, required);
        Quiz quiz(required);
        QCOMPARE(quiz.controller->requiredProofsToUnlock(), required);
        QTEST(quiz.controller->cardProofText(), "english");
        quiz.controller->setLanguage(AppLanguage::Russian);
        QTEST(quiz.controller->cardProofText(), "russian");
    }
};

QUORVEL_TEST(TestQuiz, QCoreApplication)
#include "tst_quiz.moc"
