#include "ControllerHarness.h"
#include "suite.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <utility>

using namespace Qt::StringLiterals;

namespace {} // namespace

class TestCards : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAddedCardStandsInFrontTrimmedAndIsSaved()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.addCard(u"First?"_s, u"1"_s);
        harness.clock.setWallClock(QDateTime(QDate(2026, 11, 20), QTime(9, 30, 15, 700), Qt::UTC));
        harness.addCard(u" \n What is f'? \u2028"_s, u"\t derivative | slope\u00a0"_s, u"\u3000 Calculus "_s);

        QCOMPARE(prompts(controller.studyCards()), QStringList({u"What is f'?"_s, u"First?"_s}));
        const auto &card = controller.studyCards().front();
        QVERIFY(!card.id.isNull());
        QVERIFY(card.id != controller.studyCards().back().id);
        QCOMPARE(card.topic, std::optional(u"Calculus"_s));
        QCOMPARE(card.expectedAnswer, u"derivative | slope"_s);
        QCOMPARE(card.createdAt, QDateTime(QDate(2026, 11, 20), QTime(9, 30, 15), Qt::UTC));
        QCOMPARE(card.correctCount, 0);
        QCOMPARE(card.wrongCount, 0);
        QVERIFY(!card.lastAskedAt && !card.lastCorrectAt);
        QCOMPARE(harness.storedCards(), controller.studyCards());
        QCOMPARE(harness.saves(), QStringList({u"study-cards.json"_s, u"study-cards.json"_s}));
    }

    void addingClearsTheEditorAndTellsSo()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.addCard(u"2 + 2"_s, u"4"_s, u"Sums"_s);
        QCOMPARE(controller.newCardTopicText(), QString());
        QCOMPARE(controller.newCardPromptText(), QString());
        QCOMPARE(controller.newCardAnswerText(), QString());
        QCOMPARE(controller.quizFeedback(), u"Card added."_s);
        QCOMPARE(harness.events(), QStringList{u"Card added."_s});
        controller.setLanguage(AppLanguage::Russian);
        harness.addCard(u"2 + 3"_s, u"5"_s);
        QCOMPARE(controller.quizFeedback(), u"Карточка добавлена."_s);
        QCOMPARE(harness.events().first(), u"Card added."_s);
    }

    void theFirstCardIsAskedAtOnceLaterOnesWait()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QVERIFY(!controller.hasActiveStudyCard());
        harness.addCard(u"First?"_s, u"1"_s);
        QCOMPARE(controller.activeStudyCardOrEmpty().prompt, u"First?"_s);
        harness.addCard(u"Second?"_s, u"2"_s);
        QCOMPARE(controller.activeStudyCardOrEmpty().prompt, u"First?"_s);
    }

    void aCardWithoutTopicIsFiledUnderTheCurrentOne()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setCurrentStudyTopicText(u"  Biology \n"_s);
        harness.addCard(u"Where is DNA?"_s, u"nucleus"_s, u"   "_s);
        QCOMPARE(controller.studyCards().front().topic, std::optional(u"Biology"_s));
        harness.addCard(u"2 + 2"_s, u"4"_s, u"Sums"_s);
        QCOMPARE(controller.studyCards().front().topic, std::optional(u"Sums"_s));
    }

    void withoutAnyTopicTheCardHasNone()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setCurrentStudyTopicText(u" \t"_s);
        harness.addCard(u"2 + 2"_s, u"4"_s);
        QCOMPARE(controller.studyCards().front().topic, std::nullopt);
        QVERIFY(!harness.files.files.at(u"study-cards.json"_s).contains("topic"));
    }

    void questionAndAnswerAreBothNeeded_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::addColumn<QString>("expectedAnswer");
        QTest::newRow("no question") << u" \u2029 "_s << u"4"_s;
        QTest::newRow("no answer") << u"2 + 2"_s << u"\n"_s;
        QTest::newRow("neither") << QString() << QString();
    }
    void questionAndAnswerAreBothNeeded()
    {
        QFETCH(QString, prompt);
        QFETCH(QString, expectedAnswer);
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.addCard(prompt, expectedAnswer, u"Sums"_s);
        QCOMPARE(controller.quizFeedback(), u"Card needs both a question and an expected answer."_s);
        QCOMPARE(controller.newCardPromptText(), prompt);
        QCOMPARE(controller.newCardAnswerText(), expectedAnswer);
        QCOMPARE(controller.newCardTopicText(), u"Sums"_s);
        QVERIFY(controller.studyCards().empty());
        QVERIFY(controller.recentEvents().isEmpty());
        QVERIFY(harness.files.steps.empty());
        controller.setLanguage(AppLanguage::Russian);
        controller.addStudyCard();
        QCOMPARE(controller.quizFeedback(), u"Карточке нужны вопрос и ожидаемый ответ."_s);
    }

    void whatIsNotSavedIsShownUntilItIs()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.addCard(u"1 + 1"_s, u"2"_s);
        QCOMPARE(controller.unsavedText(), QString());
        harness.files.writeFailure = u"No space left on device"_s;
        harness.addCard(u"2 + 2"_s, u"4"_s);
        controller.saveSettings();
        QCOMPARE(controller.unsavedText(),
                 u"Could not save: cards, settings (No space left on device). Quorvel keeps what you did and "
                 "tries again with the next change; do not quit before that works."_s);
        controller.setLanguage(AppLanguage::Russian);
        QVERIFY(controller.unsavedText().startsWith(
            u"Не удалось сохранить: карточки, настройки (No space left on device). "_s));
        harness.files.writeFailure.clear();
        controller.saveSettings();
        QVERIFY(controller.unsavedText().startsWith(u"Не удалось сохранить: карточки (No"_s));
        harness.addCard(u"2 + 3"_s, u"5"_s);
        QCOMPARE(controller.unsavedText(), QString());
        QCOMPARE(harness.storedCards().size(), size_t(3));
    }

    void aFailedSaveIsToldAndKeepsTheCard()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.files.writeFailure = u"Not a directory"_s;
        harness.addCard(u"2 + 2"_s, u"4"_s);
        QCOMPARE(harness.events(),
                 QStringList({u"Card added."_s, u"Could not save cards: Not a directory"_s}));
        QCOMPARE(controller.studyCards().size(), size_t(1));
        controller.setLanguage(AppLanguage::Russian);
        harness.addCard(u"2 + 3"_s, u"5"_s);
        QCOMPARE(harness.events().value(1), u"Could not save cards: Not a directory"_s);
    }

    void deletingRemovesEveryCardOfThatId()
    {
        ControllerHarness harness;
        auto first = ControllerHarness::card(u"one"_s, u"1"_s);
        auto twin = ControllerHarness::card(u"twin"_s, u"1"_s);
        twin.id = first.id;
        const auto other = ControllerHarness::card(u"other"_s, u"2"_s);
        harness.storeCards({first, other, twin});
        auto &controller = harness.start();
        controller.deleteStudyCard(controller.studyCards().front());
        QCOMPARE(prompts(controller.studyCards()), QStringList{u"other"_s});
        QCOMPARE(harness.storedCards(), controller.studyCards());
        QCOMPARE(harness.events(), QStringList{u"Card deleted."_s});
        QCOMPARE(harness.saves(), QStringList{u"study-cards.json"_s});
    }

    void deletingAnUnknownCardSavesAndLogsAllTheSame()
    {
        ControllerHarness harness;
        harness.storeCards({ControllerHarness::card(u"one"_s, u"1"_s)});
        auto &controller = harness.start();
        controller.deleteStudyCard(ControllerHarness::card(u"stranger"_s, u"1"_s));
        QCOMPARE(controller.studyCards().size(), size_t(1));
        QCOMPARE(harness.saves(), QStringList{u"study-cards.json"_s});
        QCOMPARE(harness.events(), QStringList{u"Card deleted."_s});
    }

    void deletingTheAskedCardAsksTheNext()
    {
        ControllerHarness harness;
        harness.storeCards(
            {ControllerHarness::card(u"one"_s, u"1"_s), ControllerHarness::card(u"two"_s, u"2"_s)});
        auto &controller = harness.start();
        const auto asked = *controller.activeStudyCard();
        controller.setQuizAnswerText(u"half an ans"_s);
        controller.deleteStudyCard(asked);
        QVERIFY(controller.hasActiveStudyCard());
        QVERIFY(controller.activeStudyCard()->id != asked.id);
        QCOMPARE(controller.quizAnswerText(), QString());
        QCOMPARE(controller.quizFeedback(), u"Add cards, then answer them during a study session."_s);
        controller.revealQuizAnswer();
        controller.deleteStudyCard(*controller.activeStudyCard());
        QVERIFY(!controller.hasActiveStudyCard());
        QVERIFY(!controller.hasQuizRevealedAnswer());
    }

    void deletingAnotherCardLeavesTheAskedOneAlone()
    {
        ControllerHarness harness;
        harness.storeCards(
            {ControllerHarness::card(u"one"_s, u"1"_s), ControllerHarness::card(u"two"_s, u"2"_s)});
        auto &controller = harness.start();
        controller.setQuizAnswerText(u"half an ans"_s);
        controller.deleteStudyCard(controller.studyCards().back());
        QCOMPARE(controller.activeStudyCardOrEmpty().prompt, u"one"_s);
        QCOMPARE(controller.quizAnswerText(), u"half an ans"_s);
    }

    void theTopicFilterNormalizesBothSides()
    {
        ControllerHarness harness;
        harness.storeCards({ControllerHarness::card(u"a"_s, u"1"_s, u"math"_s),
                            ControllerHarness::card(u"b"_s, u"1"_s, u"MATH."_s),
                            ControllerHarness::card(u"c"_s, u"1"_s, u"Maths"_s),
                            ControllerHarness::card(u"d"_s, u"1"_s),
                            ControllerHarness::card(u"e"_s, u"1"_s, QString())});
        auto &controller = harness.start();
        QCOMPARE(prompts(controller.cardsMatchingCurrentTopic()).join(u""), u"abcde"_s);
        QCOMPARE(controller.topicCardCount(), 5);
        controller.setCurrentStudyTopicText(u"  Math  "_s);
        QCOMPARE(prompts(controller.cardsMatchingCurrentTopic()).join(u""), u"ab"_s);
        QCOMPARE(controller.topicCardCount(), 2);
        controller.setCurrentStudyTopicText(u"Physics"_s);
        QCOMPARE(controller.topicCardCount(), 0);
        controller.setCurrentStudyTopicText(u" ... "_s); // nothing is left of it
        QCOMPARE(controller.topicCardCount(), 5);
    }

    void theShownTopicIsTrimmedOrSaysAll()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QCOMPARE(controller.activeTopicDisplay(), u"All topics"_s);
        controller.setCurrentStudyTopicText(u" \n Organic Chemistry! "_s);
        QCOMPARE(controller.activeTopicDisplay(), u"Organic Chemistry!"_s);
        controller.setCurrentStudyTopicText(u"\u3000"_s);
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.activeTopicDisplay(), u"Все темы"_s);
    }

    void countsFollowEveryChange()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QCOMPARE(controller.cardBankText(), u"0 total, 0 matching current topic."_s);
        harness.addCard(u"a"_s, u"1"_s, u"Sums"_s);
        harness.addCard(u"b"_s, u"2"_s);
        QCOMPARE(controller.cardBankText(), u"2 total, 2 matching current topic."_s);
        controller.setCurrentStudyTopicText(u"sums"_s);
        QCOMPARE(controller.cardBankText(), u"2 total, 1 matching current topic."_s);
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.cardBankText(), u"Всего: 2, по текущей теме: 1."_s);
        controller.deleteStudyCard(controller.studyCards().back());
        QCOMPARE(controller.cardBankText(), u"Всего: 1, по текущей теме: 0."_s);
        QCOMPARE(controller.topicCardCount(), 0);
    }

    void readinessFollowsTheCardsOfTheTopic()
    {
        ControllerHarness harness;
        harness.storeCards({ControllerHarness::card(u"a"_s, u"1"_s, u"Sums"_s)});
        auto &controller = harness.startWith(ControllerHarness::config(25, 45, 2));
        QVERIFY(!controller.canStartStudy());
        QVERIFY(controller.readinessIsShort());
        QCOMPARE(controller.startReadinessText(), u"Need 1 more matching card, or set card proofs to 0."_s);
        QCOMPARE(controller.focusSubtitle(), controller.startReadinessText());
        harness.addCard(u"b"_s, u"1"_s, u"sums!"_s);
        QVERIFY(controller.canStartStudy());
        QVERIFY(!controller.readinessIsShort());
        QCOMPARE(controller.startReadinessText(), u"Ready. 2 matching cards available."_s);
        controller.setCurrentStudyTopicText(u"Latin"_s);
        QVERIFY(!controller.canStartStudy());
        QCOMPARE(controller.startReadinessText(), u"Need 2 more matching cards, or set card proofs to 0."_s);
    }

    void nothingIsPublishedAnewAtAHeartbeat()
    {
        ControllerHarness harness;
        harness.storeCards({ControllerHarness::card(u"a"_s, u"1"_s, u"Sums"_s)});
        auto &controller = harness.startWith(ControllerHarness::config(25, 45, 1));
        controller.setCurrentStudyTopicText(u"sums"_s);
        const QSignalSpy count(&controller, &QuorvelController::topicCardCountChanged);
        const QSignalSpy bank(&controller, &QuorvelController::cardBankTextChanged);
        const QSignalSpy readiness(&controller, &QuorvelController::startReadinessTextChanged);
        const QSignalSpy canStart(&controller, &QuorvelController::canStartStudyChanged);
        harness.seconds(10);
        QCOMPARE(count.size() + bank.size() + readiness.size() + canStart.size(), 0);
    }

    void anObjectInsteadOfAListLoadsAsNoCardsAndIsKeptAsideByTheNextSave()
    {
        ControllerHarness harness;
        harness.files.files[u"study-cards.json"_s] = R"({"cards": []})";
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"study-cards.json could not be loaded"_s));
        auto &controller = harness.start();
        QVERIFY(controller.studyCards().empty());
        QVERIFY(controller.recentEvents().isEmpty());
        QVERIFY(harness.files.steps.empty());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"its old content is now"_s));
        harness.addCard(u"a"_s, u"1"_s);
        QCOMPARE(harness.storedCards().size(), size_t(1));
        QVERIFY(std::any_of(harness.files.files.begin(), harness.files.files.end(), [](const auto &file) {
            return file.first.startsWith(u"study-cards.json.unreadable-") &&
                   file.second == R"({"cards": []})";
        }));
    }

    void manyCardsAtOnceStandAsIfPutInFrontOneByOne()
    {
        StudyCardModel oneByOne;
        StudyCardModel atOnce;
        const QAbstractItemModelTester tester(&atOnce);
        const QSignalSpy inserted(&atOnce, &QAbstractItemModel::rowsInserted);
        const auto old = ControllerHarness::card(u"old"_s, u"0"_s, u"Sums"_s);
        std::vector<StudyCard> cards;
        for (int number = 0; number < 5; ++number)
            cards.push_back(ControllerHarness::card(QString::number(number), u"1"_s,
                                                    number % 2 ? std::optional(u"sums"_s) : std::nullopt));
        for (auto *model : {&oneByOne, &atOnce}) {
            model->replaceAll({old});
            QCOMPARE(model->bank().countOfTopic(u"SUMS"_s), 1); // from here on topics are counted
        }
        for (const auto &card : cards)
            oneByOne.insertFront(card);
        atOnce.insertAllFront(cards);
        QCOMPARE(atOnce.bank().cards(), oneByOne.bank().cards());
        QCOMPARE(prompts(atOnce.bank().cards()).join(u' '), u"4 3 2 1 0 old"_s);
        QCOMPARE(atOnce.bank().countOfTopic(u"SUMS"_s), 3);
        QCOMPARE(inserted, (QList<QVariantList>{{QModelIndex(), 0, 4}}));
        atOnce.insertAllFront({});
        QCOMPARE(inserted.size(), 1);
    }

    void theRevisionGrowsWithEveryChange()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        auto before = controller.studyCardsRevision();
        const auto hasGrown = [&] {
            return controller.studyCardsRevision() > std::exchange(before, controller.studyCardsRevision());
        };
        harness.addCard(u"a"_s, u"1"_s);
        QVERIFY(hasGrown());
        harness.answerRightly();
        QVERIFY(hasGrown());
        controller.deleteStudyCard(controller.studyCards().front());
        QVERIFY(hasGrown());
    }

    void aRowThatIsGoneIsEmpty()
    {
        StudyCardModel model;
        model.replaceAll({ControllerHarness::card(u"a"_s, u"1"_s)});
        const auto row = model.index(0);
        model.replaceAll({});
        QCOMPARE(model.data(row, StudyCardModel::CardRole), QVariant());
        QCOMPARE(model.data(QModelIndex(), StudyCardModel::CardRole), QVariant());
    }

    void aNewListIsThereWhenItIsAnnounced()
    {
        StudyCardModel model;
        QList<int> rows;
        const auto count = [&] { rows.append(model.rowCount()); };
        connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, count);
        connect(&model, &QAbstractItemModel::modelReset, this, count);
        model.replaceAll({StudyCard(), StudyCard()});
        QCOMPARE(rows, QList<int>({0, 2}));
        QCOMPARE(model.rowCount(model.index(0)), 0); // a list, no tree
    }

    void theListNamesTheRowsThatChange()
    {
        ControllerHarness harness;
        harness.storeCards(
            {ControllerHarness::card(u"a"_s, u"1"_s, u"Sums"_s), ControllerHarness::card(u"b"_s, u"2"_s)});
        auto &controller = harness.start();
        auto &model = *controller.studyCardModel();
        const QAbstractItemModelTester tester(&model);
        const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        const QSignalSpy reset(&model, &QAbstractItemModel::modelReset);

        harness.addCard(u"c"_s, u"3"_s);
        QCOMPARE(inserted, (QList<QVariantList>{{QModelIndex(), 0, 0}}));
        harness.answer(u"wrong"_s); // "a" is asked
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex().row(), 1);
        controller.deleteStudyCard(controller.studyCards().back());
        QCOMPARE(removed, (QList<QVariantList>{{QModelIndex(), 2, 2}}));
        QCOMPARE(reset.size(), 0);

        const auto row = model.index(1);
        const auto card = model.data(row, StudyCardModel::CardRole).value<StudyCard>();
        QCOMPARE(card.prompt, u"a"_s);
        QCOMPARE(card.topic, u"Sums"_s);
        QCOMPARE(card.wrongCount, 1);
        QCOMPARE(card.correctCount, 0);
        QCOMPARE(card, controller.studyCards()[1]);
        QCOMPARE(model.data(model.index(9), StudyCardModel::CardRole), QVariant());
        QCOMPARE(model.data(row, Qt::DecorationRole), QVariant());
    }
};

QUORVEL_TEST(TestCards, QCoreApplication)
#include "tst_cards.moc"
