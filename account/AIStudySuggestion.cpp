#include "AIStudySuggestion.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

AIStudySuggestion englishPack(const QString &topic)
{
    return {
        u"Local coach generated a simple plan for "_s + topic + u". Sign in to use server AI suggestions."_s,
        {u"Open the main theory source for "_s + topic, u"Write a one-page summary of the key definitions"_s,
         u"Solve 5 easy problems without looking at answers"_s,
         u"Review mistakes and write the corrected method"_s, u"Create 5 recall cards for weak points"_s},
        {{topic, u"What is the central definition in "_s + topic + u"?"_s,
          u"write your exact definition here"_s},
         {topic, u"What is the most common mistake in "_s + topic + u"?"_s, u"describe the mistake"_s},
         {topic, u"What is the first step when solving a "_s + topic + u" problem?"_s,
          u"write the first step"_s},
         {topic, u"What formula or rule should you remember for "_s + topic + u"?"_s, u"write the formula"_s},
         {topic, u"How do you check your answer in "_s + topic + u"?"_s, u"write the check"_s}}};
}

AIStudySuggestion russianPack(const QString &topic)
{
    return {
        u"Локальный тренер создал простой план по теме: "_s + topic +
            u". Войди в аккаунт, чтобы использовать серверный ИИ."_s,
        {u"Открой основной источник теории по теме "_s + topic,
         u"Напиши краткий конспект ключевых определений на одну страницу"_s,
         u"Реши 5 лёгких задач без подсказок и ответов"_s,
         u"Разбери ошибки и запиши правильный метод решения"_s, u"Создай 5 карточек по слабым местам"_s},
        {{topic, u"Какое главное определение нужно знать по теме "_s + topic + u"?"_s,
          u"запиши точное определение"_s},
         {topic, u"Какая самая частая ошибка в теме "_s + topic + u"?"_s, u"опиши ошибку"_s},
         {topic, u"Какой первый шаг при решении задачи по теме "_s + topic + u"?"_s, u"запиши первый шаг"_s},
         {topic, u"Какую формулу или правило нужно помнить для темы "_s + topic + u"?"_s,
          u"запиши формулу или правило"_s},
         {topic, u"Как проверить ответ в теме "_s + topic + u"?"_s, u"запиши способ проверки"_s}}};
}

std::optional<QString> stringOf(const QJsonObject &object, const QString &key)
{
    const auto value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QJsonArray> arrayOf(const QJsonObject &object, const QString &key)
{
    const auto value = object.value(key);
    return value.isArray() ? std::optional(value.toArray()) : std::nullopt;
}

std::optional<AICardSuggestion> cardFrom(const QJsonObject &object)
{
    const auto topic = stringOf(object, u"topic"_s);
    const auto prompt = stringOf(object, u"prompt"_s);
    const auto answer = stringOf(object, u"answer"_s);
    if (!topic || !prompt || !answer)
        return std::nullopt;
    return AICardSuggestion{*topic, *prompt, *answer};
}

} // namespace

AIStudySuggestion AIStudySuggestion::fallback(const QString &topic, AppLanguage language)
{
    const auto typed = topic.trimmed();
    if (language == AppLanguage::Russian)
        return russianPack(typed.isEmpty() ? u"тема экзамена"_s : typed);
    return englishPack(typed.isEmpty() ? u"your exam topic"_s : typed);
}

std::optional<AIStudySuggestion> suggestionFrom(const QJsonObject &object)
{
    const auto message = stringOf(object, u"message"_s);
    const auto tasks = arrayOf(object, u"tasks"_s);
    const auto cards = arrayOf(object, u"cards"_s);
    if (!message || !tasks || !cards)
        return std::nullopt;
    AIStudySuggestion suggestion{*message, {}, {}};
    for (const auto &task : *tasks) {
        if (!task.isString())
            return std::nullopt;
        suggestion.tasks.append(task.toString());
    }
    for (const auto &value : *cards) {
        auto card = value.isObject() ? cardFrom(value.toObject()) : std::nullopt;
        if (!card)
            return std::nullopt;
        suggestion.cards.push_back(*std::move(card));
    }
    return suggestion;
}
