// What a model wrote. Whatever it was, what is passed on is within the bounds.
#include "plainText.h"
#include "require.h"
#include "suggestionReply.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/json.hpp>
#include <cstdint>

namespace {

bool isWithin(std::string_view text, std::size_t most)
{
    const auto count = characterCount(text);
    return count && *count <= most;
}

/// One line that says something.
bool isLine(std::string_view text, std::size_t most)
{
    return !text.empty() && isWithin(text, most) && !hasControlCharacters(text) && trimmed(text) == text;
}

void requireFit(const Suggestion &suggestion)
{
    require(isWithin(suggestion.message, suggestionBounds::message), "the message's length");
    require(plainLines(suggestion.message) == suggestion.message, "a plain message");
    require(suggestion.tasks.size() <= suggestionBounds::tasks, "the number of tasks");
    require(suggestion.cards.size() <= suggestionBounds::cards, "the number of cards");
    require(!suggestion.tasks.empty() || !suggestion.cards.empty(), "something to do");
    for (const auto &task : suggestion.tasks)
        require(isLine(task, suggestionBounds::task), "a task");
    for (const auto &card : suggestion.cards) {
        require(card.topic.empty() || isLine(card.topic, suggestionBounds::cardTopic), "a card's topic");
        require(isLine(card.prompt, suggestionBounds::cardPrompt), "a card's prompt");
        require(isLine(card.answer, suggestionBounds::cardAnswer), "a card's answer");
    }
}

/// Read again from its own JSON, it is the same.
void requireSame(const Suggestion &suggestion)
{
    namespace json = boost::json;
    json::object message{{"content", jsonOf(suggestion)}};
    json::object choice{{"message", std::move(message)}};
    const auto again =
        readSuggestion(json::serialize(json::object{{"choices", json::array{std::move(choice)}}}));
    require(again.has_value() && *again == suggestion, "the same again");
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    // As the whole answer, and as the text of one that is well otherwise, where a text may hold it.
    boost::json::object message{{"content", bytes}};
    boost::json::object choice{{"message", std::move(message)}};
    const boost::json::object wrapped{{"choices", boost::json::array{std::move(choice)}}};
    for (const auto &suggestion : {readSuggestion(bytes), readSuggestion(boost::json::serialize(wrapped))}) {
        require(suggestion.has_value() || !suggestion.error().reason.empty(), "a reason");
        if (!suggestion)
            continue;
        requireFit(*suggestion);
        requireSame(*suggestion);
    }
    return 0;
}
