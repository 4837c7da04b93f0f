#include "suggestionReply.h"

#include "jsonBody.h"
#include "plainText.h"
#include "textChecks.h"

#include <boost/json.hpp>

namespace json = boost::json;

namespace {

bool isWithin(std::string_view text, std::size_t most)
{
    return characterCount(text).value_or(most + 1) <= most;
}

/// As jsonObject(), up to 32 levels: other servers tell much about an answer that nobody needs.
Result<json::object> objectIn(std::string_view text, const char *reason)
{
    boost::system::error_code error;
    auto value = json::parse(text, error);
    if (error || !value.is_object())
        return Failure{reason};
    return std::move(value.get_object());
}

/// The first choice; none where there is no such thing.
const json::object *firstChoice(const json::object &answer)
{
    const auto *const choices = answer.if_contains("choices");
    const auto *const list = choices != nullptr ? choices->if_array() : nullptr;
    return list != nullptr && !list->empty() ? list->front().if_object() : nullptr;
}

Result<std::string_view> contentOf(const json::object &choice)
{
    const auto reason = textOf(choice, "finish_reason").value_or("");
    if (reason == "length")
        return Failure{"the answer was cut off"};
    if (reason == "content_filter")
        return Failure{"the answer was held back by a filter"};
    const auto *const field = choice.if_contains("message");
    const auto *const message = field != nullptr ? field->if_object() : nullptr;
    if (message == nullptr)
        return Failure{"the answer has no message"};
    if (const auto *const refusal = message->if_contains("refusal");
        refusal != nullptr && !refusal->is_null())
        return Failure{"the model refused"};
    const auto content = textOf(*message, "content");
    if (!content)
        return Failure{"the message has no text"};
    return *content;
}

/// Without the fence of three backticks that some models put around JSON.
std::string_view withoutFence(std::string_view content)
{
    constexpr std::string_view fence = "```";
    content = trimmed(content);
    if (!content.starts_with(fence) || !content.ends_with(fence) || content.size() < 2 * fence.size())
        return content;
    content.remove_prefix(fence.size());
    content.remove_suffix(fence.size());
    if (content.starts_with("json"))
        content.remove_prefix(std::string_view("json").size());
    return trimmed(content);
}

Result<std::vector<std::string>> tasksIn(const json::object &suggestion)
{
    const auto *const field = suggestion.if_contains("tasks");
    if (field == nullptr || !field->is_array())
        return Failure{"the suggestion has no list of tasks"};
    std::vector<std::string> tasks;
    for (const auto &item : field->get_array()) {
        if (!item.is_string())
            return Failure{"a task is no text"};
        auto task = plainLine(item.get_string());
        if (!task.empty() && isWithin(task, suggestionBounds::task) && tasks.size() < suggestionBounds::tasks)
            tasks.push_back(std::move(task));
    }
    return tasks;
}

std::optional<SuggestedCard> cardIn(const json::value &item)
{
    const auto *const card = item.if_object();
    if (card == nullptr)
        return std::nullopt;
    const auto topic = textOf(*card, "topic");
    const auto prompt = textOf(*card, "prompt");
    const auto answer = textOf(*card, "answer");
    if (!topic || !prompt || !answer)
        return std::nullopt;
    return SuggestedCard{plainLine(*topic), plainLine(*prompt), plainLine(*answer)};
}

bool isFit(const SuggestedCard &card)
{
    return !card.prompt.empty() && !card.answer.empty() &&
           isWithin(card.topic, suggestionBounds::cardTopic) &&
           isWithin(card.prompt, suggestionBounds::cardPrompt) &&
           isWithin(card.answer, suggestionBounds::cardAnswer);
}

Result<std::vector<SuggestedCard>> cardsIn(const json::object &suggestion)
{
    const auto *const field = suggestion.if_contains("cards");
    if (field == nullptr || !field->is_array())
        return Failure{"the suggestion has no list of cards"};
    std::vector<SuggestedCard> cards;
    for (const auto &item : field->get_array()) {
        auto card = cardIn(item);
        if (!card)
            return Failure{"a card is not made of three texts"};
        if (isFit(*card) && cards.size() < suggestionBounds::cards)
            cards.push_back(std::move(*card));
    }
    return cards;
}

Result<Suggestion> suggestionIn(const json::object &object)
{
    const auto message = textOf(object, "message");
    if (!message)
        return Failure{"the suggestion has no message"};
    auto tasks = tasksIn(object);
    if (!tasks)
        return tasks.error();
    auto cards = cardsIn(object);
    if (!cards)
        return cards.error();
    if (tasks->empty() && cards->empty())
        return Failure{"the suggestion holds no task and no card"};
    const auto text = plainLines(*message);
    return Suggestion{std::string(trimmed(firstCharacters(text, suggestionBounds::message))),
                      std::move(*tasks), std::move(*cards)};
}

} // namespace

Result<Suggestion> readSuggestion(std::string_view body)
{
    const auto answer = objectIn(body, "the answer is no JSON object");
    if (!answer)
        return answer.error();
    const auto *const choice = firstChoice(*answer);
    if (choice == nullptr)
        return Failure{"the answer has no choice"};
    const auto content = contentOf(*choice);
    if (!content)
        return content.error();
    const auto suggestion = objectIn(withoutFence(*content), "the message is no JSON object");
    if (!suggestion)
        return suggestion.error();
    return suggestionIn(*suggestion);
}
