#include "AIStudySuggestion.h"
#include "suggestionJson.h"
#include "suite.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

std::optional<AIStudySuggestion> read(const QByteArray &json)
{
    const auto document = QJsonDocument::fromJson(json);
    Q_ASSERT(document.isObject());
    return suggestionFrom(document.object());
}

} // namespace

class TestAIStudySuggestion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theEnglishPackIsWrittenOut()
    {
        const AIStudySuggestion expected{
            u"Local coach generated a simple plan for limits. Sign in to use server AI suggestions."_s,
            {u"Open the main theory source for limits"_s,
             u"Write a one-page summary of the key definitions"_s,
             u"Solve 5 easy problems without looking at answers"_s,
             u"Review mistakes and write the corrected method"_s, u"Create 5 recall cards for weak points"_s},
            {{u"limits"_s, u"What is the central definition in limits?"_s,
              u"write your exact definition here"_s},
             {u"limits"_s, u"What is the most common mistake in limits?"_s, u"describe the mistake"_s},
             {u"limits"_s, u"What is the first step when solving a limits problem?"_s,
              u"write the first step"_s},
             {u"limits"_s, u"What formula or rule should you remember for limits?"_s, u"write the formula"_s},
             {u"limits"_s, u"How do you check your answer in limits?"_s, u"write the check"_s}}};
        QCOMPARE(AIStudySuggestion::fallback(u"\n limits\u3000"_s, AppLanguage::English), expected);
    }

    void theRussianPackIsWrittenOut()
    {
        const AIStudySuggestion expected{
            u"Локальный тренер создал простой план по теме: пределы. "
            u"Войди в аккаунт, чтобы использовать серверный ИИ."_s,
            {u"Открой основной источник теории по теме пределы"_s,
             u"Напиши краткий конспект ключевых определений на одну страницу"_s,
             u"Реши 5 лёгких задач без подсказок и ответов"_s,
             u"Разбери ошибки и запиши правильный метод решения"_s, u"Создай 5 карточек по слабым местам"_s},
            {{u"пределы"_s, u"Какое главное определение нужно знать по теме пределы?"_s,
              u"запиши точное определение"_s},
             {u"пределы"_s, u"Какая самая частая ошибка в теме пределы?"_s, u"опиши ошибку"_s},
             {u"пределы"_s, u"Какой первый шаг при решении задачи по теме пределы?"_s,
              u"запиши первый шаг"_s},
             {u"пределы"_s, u"Какую формулу или правило нужно помнить для темы пределы?"_s,
              u"запиши формулу или правило"_s},
             {u"пределы"_s, u"Как проверить ответ в теме пределы?"_s, u"запиши способ проверки"_s}}};
        QCOMPARE(AIStudySuggestion::fallback(u"пределы"_s, AppLanguage::Russian), expected);
    }

    void withoutATopicTheExamIsMeant()
    {
        const auto english = AIStudySuggestion::fallback(u" \n\t"_s, AppLanguage::English);
        QCOMPARE(english.message, u"Local coach generated a simple plan for your exam topic. "
                                  u"Sign in to use server AI suggestions."_s);
        const auto russian = AIStudySuggestion::fallback(QString(), AppLanguage::Russian);
        QCOMPARE(russian.tasks.first(), u"Открой основной источник теории по теме тема экзамена"_s);
        for (const auto &card : english.cards)
            QCOMPARE(card.topic, u"your exam topic"_s);
        for (const auto &card : russian.cards)
            QCOMPARE(card.topic, u"тема экзамена"_s);
    }

    void theTopicIsInsertedAsItIs()
    {
        const auto pack = AIStudySuggestion::fallback(u"100%1 \"f'(x)\" %2"_s, AppLanguage::English);
        QCOMPARE(pack.cards[4].prompt, u"How do you check your answer in 100%1 \"f'(x)\" %2?"_s);
        QCOMPARE(pack.tasks.size(), 5);
        QCOMPARE(pack.cards.size(), size_t(5));
    }

    void aWholeSuggestionIsReadAndUnknownKeysArePassedOver()
    {
        QCOMPARE(read(R"({"message": "m", "tasks": ["a", ""], "model": 3, "cards":
                          [{"topic": "", "prompt": "p", "answer": "x|y", "level": null}]})"),
                 (AIStudySuggestion{u"m"_s, {u"a"_s, QString()}, {{QString(), u"p"_s, u"x|y"_s}}}));
        QCOMPARE(read(R"({"message": "", "tasks": [], "cards": []})"), AIStudySuggestion());
    }

    void aMissingKeyOrAWrongTypeMakesItNone_data()
    {
        QTest::addColumn<QByteArray>("json");
        const auto row = [](const char *what, const char *json) { QTest::newRow(what) << QByteArray(json); };
        row("empty", R"({})");
        row("no message", R"({"tasks": [], "cards": []})");
        row("no tasks", R"({"message": "m", "cards": []})");
        row("no cards", R"({"message": "m", "tasks": []})");
        row("other case", R"({"Message": "m", "tasks": [], "cards": []})");
        row("null message", R"({"message": null, "tasks": [], "cards": []})");
        row("number as message", R"({"message": 1, "tasks": [], "cards": []})");
        row("tasks as one text", R"({"message": "m", "tasks": "a", "cards": []})");
        row("tasks as an object", R"({"message": "m", "tasks": {"0": "a"}, "cards": []})");
        row("a number among the tasks", R"({"message": "m", "tasks": ["a", 2], "cards": []})");
        row("null among the tasks", R"({"message": "m", "tasks": ["a", null], "cards": []})");
        row("cards as an object", R"({"message": "m", "tasks": [], "cards": {}})");
        row("a text among the cards", R"({"message": "m", "tasks": [], "cards": ["p"]})");
        row("a list among the cards", R"({"message": "m", "tasks": [], "cards": [["p"]]})");
        row("card without topic",
            R"({"message": "m", "tasks": [], "cards": [{"prompt": "", "answer": ""}]})");
        row("card without prompt",
            R"({"message": "m", "tasks": [], "cards": [{"topic": "", "answer": ""}]})");
        row("card without answer",
            R"({"message": "m", "tasks": [], "cards": [{"topic": "", "prompt": ""}]})");
        row("card with null topic",
            R"({"message": "m", "tasks": [], "cards": [{"topic": null, "prompt": "p", "answer": "a"}]})");
        row("card with a number as answer",
            R"({"message": "m", "tasks": [], "cards": [{"topic": "", "prompt": "p", "answer": 4}]})");
        row("one bad card of two",
            R"({"message": "m", "tasks": [], "cards": [{"topic": "", "prompt": "p", "answer": "a"}, {}]})");
    }
    void aMissingKeyOrAWrongTypeMakesItNone()
    {
        QFETCH(QByteArray, json);
        QCOMPARE(read(json), std::nullopt);
    }

    void whatIsWrittenIsReadAgain()
    {
        for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
            const auto pack = AIStudySuggestion::fallback(u"ёлка \"&\\\u2028"_s, language);
            const auto bytes = QJsonDocument(toJson(pack)).toJson();
            QCOMPARE(suggestionFrom(QJsonDocument::fromJson(bytes).object()), pack);
        }
        QCOMPARE(toJson({u"m"_s, {u"t"_s}, {{u"c"_s, u"p"_s, u"a"_s}}}),
                 QJsonDocument::fromJson(R"({"message": "m", "tasks": ["t"],
                                             "cards": [{"topic": "c", "prompt": "p", "answer": "a"}]})")
                     .object());
    }
};

QUORVEL_TEST(TestAIStudySuggestion, QCoreApplication)
#include "tst_AIStudySuggestion.moc"
