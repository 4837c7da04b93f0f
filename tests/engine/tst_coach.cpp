#include "AIStudySuggestion.h"
#include "ControllerHarness.h"
#include "suggestionJson.h"
#include "suite.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {

const QString initialText =
    u"AI Coach can generate a plan and cards. Add an API key for model-backed suggestions, or use the "
    u"local fallback."_s;

QuorvelController &startSignedIn(ControllerHarness &harness)
{
    harness.preferences.values[u"accessMode"_s] = u"account"_s;
    return harness.start();
}

/// Presses the coach's main button and lets the event loop come round.
void generate(QuorvelController &controller)
{
    controller.generateAIPlanAndCards();
    QCoreApplication::processEvents();
}

AIStudySuggestion small()
{
    return {u"Go."_s, {u"read"_s}, {{u"Sums"_s, u"2 + 2"_s, u"4"_s}}};
}

} // namespace

class TestCoach : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aGuestWithoutAnyTopicGetsTheExamPack()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.continueAsGuest();
        controller.generateAIPlanAndCards();
        QVERIFY(controller.isAICoachRunning());
        QCOMPARE(controller.aiOutputText(), u"AI Coach is thinking..."_s);
        QVERIFY(controller.studyTasks().empty());
        QCoreApplication::processEvents();
        QVERIFY(!controller.isAICoachRunning());
        QCOMPARE(controller.aiOutputText(),
                 u"Local coach: Local coach generated a simple plan for your exam topic. Sign in to use "
                 u"server AI suggestions.\n\nAdded 5 tasks and 5 cards."_s);
        QCOMPARE(controller.studyTasks().size(), size_t(5));
        QCOMPARE(controller.studyCards().size(), size_t(5));
        QCOMPARE(controller.studyTaskCount(), 5);
        QCOMPARE(controller.studyCardCount(), 5);
        for (const auto &card : controller.studyCards())
            QCOMPARE(card.topic, std::optional(u"your exam topic"_s));
        QCOMPARE(harness.events(), QStringList{u"Local coach added 5 tasks and 5 cards."_s});
        QVERIFY(harness.backend.calls.empty());
    }

    void theSameInRussian()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setLanguage(AppLanguage::Russian);
        controller.generateAIPlanAndCards(); // also before any choice
        QCOMPARE(controller.aiOutputText(), u"ИИ-тренер думает..."_s);
        QCoreApplication::processEvents();
        QCOMPARE(
            controller.aiOutputText(),
            u"Локальный тренер: Локальный тренер создал простой план по теме: тема экзамена. Войди в "
            u"аккаунт, чтобы использовать серверный ИИ.\n\nДобавлено задач: 5. Добавлено карточек: 5."_s);
        QCOMPARE(titles(controller.studyTasks()).first(), u"Создай 5 карточек по слабым местам"_s);
        QCOMPARE(harness.events(), QStringList{u"Локальный тренер added 5 tasks and 5 cards."_s});
        QVERIFY(harness.backend.calls.empty());
    }

    void aBlankTopicFieldMeansTheCurrentTopic_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("current");
        QTest::addColumn<QString>("sent");
        QTest::newRow("typed, as typed") << u" limits \n"_s << u"Sums"_s << u" limits \n"_s;
        QTest::newRow("only spaces") << u" \n\u3000"_s << u" Sums "_s << u" Sums "_s;
        QTest::newRow("neither") << QString() << QString() << QString();
    }
    void aBlankTopicFieldMeansTheCurrentTopic()
    {
        QFETCH(QString, typed);
        QFETCH(QString, current);
        QFETCH(QString, sent);
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.setAiPromptText(typed);
        controller.setCurrentStudyTopicText(current);
        controller.generateAIPlanAndCards();
        QCOMPARE(harness.backend.calls.at(0).body.value(u"topic"_s).toString(), sent);
        controller.addLocalCoachPack();
        QCOMPARE(controller.studyCards().front().topic,
                 std::optional(sent.trimmed().isEmpty() ? u"your exam topic"_s : sent.trimmed()));
        QCOMPARE(controller.aiPromptText(), typed);
    }

    void theTopicIsThatOfTheMomentOfTheCall()
    {
        ControllerHarness harness;
        auto &guest = harness.start();
        guest.setAiPromptText(u"limits"_s);
        guest.generateAIPlanAndCards();
        guest.setAiPromptText(u"other"_s);
        QCoreApplication::processEvents();
        QCOMPARE(guest.studyCards().front().topic, std::optional(u"limits"_s));

        auto &user = startSignedIn(harness);
        user.setAiPromptText(u"series"_s);
        user.generateAIPlanAndCards();
        user.setAiPromptText(u"other"_s);
        harness.backend.answer(errorOf(u"no"_s));
        QCOMPARE(user.studyCards().front().topic, std::optional(u"series"_s));
    }

    void theServerIsAskedWithTopicLanguageAndProgress()
    {
        ControllerHarness harness;
        UserProgress progress;
        progress.totalXP = 120;
        harness.storeProgress(progress);
        auto &controller = startSignedIn(harness);
        controller.setAiPromptText(u"limits"_s);
        const auto english = controller.progressSummaryText();
        controller.generateAIPlanAndCards();
        QCOMPARE(harness.backend.calls.size(), size_t(1));
        QCOMPARE(harness.backend.calls[0].method, u"POST"_s);
        QCOMPARE(harness.backend.calls[0].path, u"/ai/suggestions"_s);
        QVERIFY(english.contains(u"120 XP"_s));
        QCOMPARE(
            harness.backend.calls[0].body,
            (QJsonObject{{u"topic"_s, u"limits"_s}, {u"language"_s, u"en"_s}, {u"progress"_s, english}}));
        harness.backend.answer(toJson(small()));
        controller.setLanguage(AppLanguage::Russian);
        controller.generateAIPlanAndCards();
        QCOMPARE(harness.backend.calls.at(0).body.value(u"language"_s).toString(), u"ru"_s);
        QCOMPARE(harness.backend.calls.at(0).body.value(u"progress"_s).toString(),
                 controller.progressSummaryText());
    }

    void theServersSuggestionIsAdded()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.generateAIPlanAndCards();
        QVERIFY(controller.isAICoachRunning());
        QCOMPARE(controller.aiOutputText(), u"AI Coach is thinking..."_s);
        auto answer = toJson(small());
        answer.insert(u"model"_s, 1);
        harness.backend.answer(answer);
        QVERIFY(!controller.isAICoachRunning());
        QCOMPARE(titles(controller.studyTasks()), QStringList{u"read"_s});
        QCOMPARE(prompts(controller.studyCards()), QStringList{u"2 + 2"_s});
        QCOMPARE(controller.aiOutputText(), u"AI: Go.\n\nAdded 1 task and 1 card."_s);
        QCOMPARE(harness.events(), QStringList{u"AI added 1 tasks and 1 cards."_s});
        controller.setLanguage(AppLanguage::Russian);
        controller.generateAIPlanAndCards();
        harness.backend.answer(answer);
        QCOMPARE(controller.aiOutputText(), u"ИИ: Go.\n\nДобавлено задач: 1. Добавлено карточек: 1."_s);
    }

    void whatFailsFallsBackToTheLocalPackAndSaysWhy_data()
    {
        QTest::addColumn<BackendAnswer>("answer");
        QTest::addColumn<QString>("reason");
        const auto unexpected = u"The server's suggestion has an unexpected form."_s;
        const auto row = [](const char *what, const BackendAnswer &answer, const QString &reason) {
            QTest::newRow(what) << answer << reason;
        };
        row("no network", errorOf(u"Connection refused"_s), u"Connection refused"_s);
        row("empty body", errorOf(QString()), QString());
        row("no cards", QJsonObject{{u"message"_s, u"m"_s}, {u"tasks"_s, QJsonArray()}}, unexpected);
        row("tasks as one text",
            QJsonObject{{u"message"_s, u"m"_s}, {u"tasks"_s, u"a"_s}, {u"cards"_s, QJsonArray()}},
            unexpected);
        row("empty object", QJsonObject(), unexpected);
    }
    void whatFailsFallsBackToTheLocalPackAndSaysWhy()
    {
        QFETCH(BackendAnswer, answer);
        QFETCH(QString, reason);
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.setAiPromptText(u"limits"_s);
        controller.generateAIPlanAndCards();
        harness.backend.answer(answer);
        QVERIFY(!controller.isAICoachRunning());
        QCOMPARE(controller.aiOutputText(),
                 u"Local coach fallback: Local coach generated a simple plan for limits. Sign in to use "
                 u"server AI suggestions.\n\nAdded 5 tasks and 5 cards.\n\nAPI note: "_s +
                     reason);
        QCOMPARE(controller.studyTasks().size(), size_t(5));
        QCOMPARE(controller.studyCards().size(), size_t(5));
        QCOMPARE(harness.events(), QStringList{u"Local coach fallback added 5 tasks and 5 cards."_s});
        controller.generateAIPlanAndCards();
        controller.setLanguage(AppLanguage::Russian); // what is added is in the language of the moment
        harness.backend.answer(answer);
        QCOMPARE(controller.aiOutputText(),
                 u"Локальный запасной режим: Локальный тренер создал простой план по теме: limits. Войди в "
                 u"аккаунт, чтобы использовать серверный ИИ.\n\nДобавлено задач: 5. Добавлено карточек: "
                 u"5.\n\nПримечание API: "_s +
                     reason);
    }

    void pressingTwiceSendsOneRequest()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.generateAIPlanAndCards();
        controller.generateAIPlanAndCards();
        QCOMPARE(harness.backend.calls.size(), size_t(1));
        harness.backend.answer(toJson(small()));
        QCOMPARE(controller.studyTasks().size(), size_t(1));
        controller.generateAIPlanAndCards();
        QCOMPARE(harness.backend.calls.size(), size_t(1));
    }

    void aGuestWhoPressesTwiceAtOnceGetsOnePack()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.generateAIPlanAndCards();
        generate(controller);
        QCOMPARE(controller.studyTasks().size(), size_t(5));
        generate(controller);
        QCOMPARE(controller.studyTasks().size(), size_t(10));
    }

    void theLocalPackDoesNotWaitForTheServer()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.generateAIPlanAndCards();
        controller.addLocalCoachPack();
        QVERIFY(controller.isAICoachRunning());
        QCOMPARE(controller.studyTasks().size(), size_t(5));
        QVERIFY(controller.aiOutputText().startsWith(u"Local coach: "_s));
        QCOMPARE(harness.backend.calls.size(), size_t(1));
        harness.backend.answer(toJson(small()));
        QVERIFY(!controller.isAICoachRunning());
        QCOMPARE(controller.studyTasks().size(), size_t(6));
        QCOMPARE(controller.studyCards().size(), size_t(6));
        QCOMPARE(harness.events(), QStringList({u"AI added 1 tasks and 1 cards."_s,
                                                u"Local coach added 5 tasks and 5 cards."_s}));
    }

    void theLocalPackNeedsNoServerWithAnAccountEither()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.addLocalCoachPack();
        QVERIFY(!controller.isAICoachRunning());
        QVERIFY(harness.backend.calls.empty());
        QCOMPARE(titles(controller.studyTasks()),
                 QStringList({u"Create 5 recall cards for weak points"_s,
                              u"Review mistakes and write the corrected method"_s,
                              u"Solve 5 easy problems without looking at answers"_s,
                              u"Write a one-page summary of the key definitions"_s,
                              u"Open the main theory source for your exam topic"_s}));
        QCOMPARE(prompts(controller.studyCards()).first(),
                 u"How do you check your answer in your exam topic?"_s);
    }

    void anotherLanguageLeavesTheOutputOfARunningCoach()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        QCOMPARE(controller.aiOutputText(), initialText);
        controller.generateAIPlanAndCards();
        controller.setLanguage(AppLanguage::Russian);
        QCOMPARE(controller.aiOutputText(), u"AI Coach is thinking..."_s);
        harness.backend.answer(toJson(small()));
        controller.setLanguage(AppLanguage::English);
        QCOMPARE(controller.aiOutputText(), initialText);
    }

    void newOnesStandInFrontOfTheOldLastFirst()
    {
        ControllerHarness harness;
        harness.clock.setWallClock(QDateTime(QDate(2026, 11, 20), QTime(9, 30, 15, 700), Qt::UTC));
        harness.storeCards({ControllerHarness::card(u"old"_s, u"1"_s)});
        auto &controller = harness.start();
        controller.setNewStudyTaskText(u"old"_s);
        controller.addStudyTask();
        controller.applyAISuggestion(
            {u"m"_s,
             {u" first \n"_s, u"second"_s},
             {{u" Sums "_s, u"\tone\n"_s, u" 1 | eins "_s}, {QString(), u"two"_s, u"2"_s}}},
            u"Somebody"_s);
        QCOMPARE(titles(controller.studyTasks()), QStringList({u"second"_s, u"first"_s, u"old"_s}));
        QCOMPARE(prompts(controller.studyCards()), QStringList({u"two"_s, u"one"_s, u"old"_s}));
        const auto now = QDateTime(QDate(2026, 11, 20), QTime(9, 30, 15), Qt::UTC);
        const auto &task = controller.studyTasks()[1];
        QVERIFY(!task.id.isNull() && task.id != controller.studyTasks()[0].id);
        QCOMPARE(task, (StudyTask{task.id, u"first"_s, now, {}, {}, {}}));
        const auto &card = controller.studyCards()[1];
        QVERIFY(!card.id.isNull() && card.id != controller.studyCards()[0].id);
        QCOMPARE(card, (StudyCard{card.id, u"Sums"_s, u"one"_s, u"1 | eins"_s, now, 0, 0, {}, {}}));
        QCOMPARE(harness.storedCards(), controller.studyCards());
        QCOMPARE(harness.storedTasks(), controller.studyTasks());
        QCOMPARE(controller.topicCardCount(), 3);
    }

    void aCardWithoutTopicIsFiledUnderTheCurrentOne()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        const AIStudySuggestion suggestion{u"m"_s, {}, {{u" \n"_s, u"p"_s, u"a"_s}}};
        controller.applyAISuggestion(suggestion, u"AI"_s);
        QCOMPARE(controller.studyCards().front().topic, std::nullopt);
        controller.setCurrentStudyTopicText(u"  Biology "_s);
        controller.applyAISuggestion(suggestion, u"AI"_s);
        QCOMPARE(controller.studyCards().front().topic, std::optional(u"Biology"_s));
        QCOMPARE(controller.studyCards().size(), size_t(2));
    }

    void emptyOnesAreSkippedButCounted()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        const AIStudySuggestion suggestion{
            u"m"_s,
            {u"read"_s, u" \u2028"_s},
            {{u"t"_s, u"p"_s, u" "_s}, {u"t"_s, u"\n"_s, u"a"_s}, {u"t"_s, u"p"_s, u"a"_s}}};
        controller.generateAIPlanAndCards();
        harness.backend.answer(toJson(suggestion));
        QCOMPARE(titles(controller.studyTasks()), QStringList{u"read"_s});
        QCOMPARE(prompts(controller.studyCards()), QStringList{u"p"_s});
        QCOMPARE(controller.aiOutputText(), u"AI: m\n\nAdded 2 tasks and 3 cards."_s);
        QCOMPARE(harness.events(), QStringList{u"AI added 2 tasks and 3 cards."_s});
    }

    void theSameSuggestionTwiceIsAddedTwice()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.applyAISuggestion(small(), u"AI"_s);
        controller.applyAISuggestion(small(), u"AI"_s);
        QCOMPARE(titles(controller.studyTasks()), QStringList({u"read"_s, u"read"_s}));
        QVERIFY(controller.studyCards()[0].id != controller.studyCards()[1].id);
    }

    void theSummaryCountsInBothLanguages_data()
    {
        QTest::addColumn<int>("tasks");
        QTest::addColumn<int>("cards");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("russian");
        const auto row = [](int tasks, int cards, const QString &english, const QString &russian) {
            QTest::addRow("%d and %d", tasks, cards) << tasks << cards << english << russian;
        };
        row(0, 0, u"Added 0 tasks and 0 cards."_s, u"Добавлено задач: 0. Добавлено карточек: 0."_s);
        row(1, 1, u"Added 1 task and 1 card."_s, u"Добавлено задач: 1. Добавлено карточек: 1."_s);
        row(1, 2, u"Added 1 task and 2 cards."_s, u"Добавлено задач: 1. Добавлено карточек: 2."_s);
        row(21, 1, u"Added 21 tasks and 1 card."_s, u"Добавлено задач: 21. Добавлено карточек: 1."_s);
        row(12345, 0, u"Added 12345 tasks and 0 cards."_s,
            u"Добавлено задач: 12345. Добавлено карточек: 0."_s);
    }
    void theSummaryCountsInBothLanguages()
    {
        QFETCH(int, tasks);
        QFETCH(int, cards);
        ControllerHarness harness;
        auto &controller = harness.start();
        AIStudySuggestion suggestion{u"100%1"_s, QStringList(tasks), {}};
        suggestion.cards.resize(size_t(cards));
        QFETCH(QString, english);
        QCOMPARE(controller.aiSummaryText(u"%1"_s, suggestion), u"%1: 100%1\n\n"_s + english);
        controller.setLanguage(AppLanguage::Russian);
        QFETCH(QString, russian);
        QCOMPARE(controller.aiSummaryText(u"X"_s, suggestion), u"X: 100%1\n\n"_s + russian);
        QVERIFY(harness.saves().isEmpty() && controller.studyTasks().empty()); // it only tells
    }

    void theQuizPicksUpANewCardWithoutAnEvent()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        QVERIFY(!controller.hasActiveStudyCard());
        const auto feedback = controller.quizFeedback();
        controller.applyAISuggestion(small(), u"AI"_s);
        QCOMPARE(controller.activeStudyCardOrEmpty().prompt, u"2 + 2"_s);
        QCOMPARE(controller.quizFeedback(), feedback);
        QCOMPARE(harness.events().size(), 1);
    }

    void failedSavesAreTold()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        harness.files.writeFailure = u"No space left on device"_s;
        controller.addLocalCoachPack();
        QCOMPARE(harness.events(), QStringList({u"Local coach added 5 tasks and 5 cards."_s,
                                                u"Could not save cards: No space left on device"_s,
                                                u"Could not save tasks: No space left on device"_s}));
        QCOMPARE(controller.studyTasks().size(), size_t(5));
        QCOMPARE(controller.studyCards().size(), size_t(5));
    }

    void anEmptySuggestionSavesAndTellsAllTheSame()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.applyAISuggestion({}, u"AI"_s);
        QCOMPARE(harness.saves(), QStringList({u"study-tasks.json"_s, u"study-cards.json"_s}));
        QCOMPARE(controller.aiOutputText(), u"AI: \n\nAdded 0 tasks and 0 cards."_s);
        QCOMPARE(harness.events(), QStringList{u"AI added 0 tasks and 0 cards."_s});
    }

    void aSuggestionForSomebodyWhoSignedOutIsStillAdded()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.generateAIPlanAndCards();
        controller.signOut();
        harness.backend.answer(toJson(small()));
        QCOMPARE(titles(controller.studyTasks()), QStringList{u"read"_s});
        QVERIFY(!controller.isAICoachRunning());
        QCOMPARE(controller.accessMode(), AccessMode::None);
    }

    void anAnswerForAControllerThatIsGoneDoesNothing()
    {
        ControllerHarness harness;
        startSignedIn(harness).generateAIPlanAndCards();
        harness.controller.reset();
        harness.backend.answer(toJson(small()));
        harness.preferences.values.clear();
        harness.start().generateAIPlanAndCards(); // the local pack of a guest
        harness.controller.reset();
        QCoreApplication::processEvents();
        QVERIFY(harness.saves().isEmpty());
    }

    void tenThousandArriveAsOneChange()
    {
        ControllerHarness harness;
        auto &controller = startSignedIn(harness);
        controller.setCurrentStudyTopicText(u"sums"_s);
        const QSignalSpy taskRows(controller.studyTaskModel(), &QAbstractItemModel::rowsInserted);
        const QSignalSpy cardRows(controller.studyCardModel(), &QAbstractItemModel::rowsInserted);
        const QSignalSpy taskRevision(&controller, &QuorvelController::studyTasksRevisionChanged);
        const QSignalSpy cardRevision(&controller, &QuorvelController::studyCardsRevisionChanged);
        AIStudySuggestion suggestion{u"m"_s, {}, {}};
        for (int number = 0; number < 10'000; ++number) {
            suggestion.tasks.append(u"task %1"_s.arg(number));
            suggestion.cards.push_back({u"Sums"_s, u"card %1"_s.arg(number), u"a"_s});
        }
        controller.generateAIPlanAndCards();
        harness.backend.answer(toJson(suggestion));
        QCOMPARE(taskRows, (QList<QVariantList>{{QModelIndex(), 0, 9'999}}));
        QCOMPARE(cardRows, (QList<QVariantList>{{QModelIndex(), 0, 9'999}}));
        QCOMPARE(taskRevision.size() + cardRevision.size(), 2);
        QCOMPARE(harness.saves(), QStringList({u"study-tasks.json"_s, u"study-cards.json"_s}));
        QCOMPARE(titles(controller.studyTasks()).first(), u"task 9999"_s);
        QCOMPARE(prompts(controller.studyCards()).last(), u"card 0"_s);
        QCOMPARE(controller.topicCardCount(), 10'000);
    }
};

QUORVEL_TEST(TestCoach, QCoreApplication)
#include "tst_coach.moc"
