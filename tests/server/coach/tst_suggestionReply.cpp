// What a model wrote, and what of it is passed on.
#include "chatAnswer.h"
#include "letters.h"
#include "suggestionReply.h"

#include <gtest/gtest.h>

namespace json = boost::json;

namespace {

const Suggestion good{"Begin with the rules.",
                      {"Read chapter 3", "Solve 5 problems"},
                      {{"Derivatives", "Derivative of x^2?", "2x|2*x"}}};

/// Why it is no suggestion; empty where it is one.
std::string reasonAgainst(std::string_view body)
{
    const auto suggestion = readSuggestion(body);
    return suggestion ? "" : suggestion.error().reason;
}

std::string reasonAgainstContent(std::string_view content)
{
    return reasonAgainst(chatAnswer(content));
}

/// The answer with one value in place of what stands at that place.
std::string answerWith(std::string_view pointer, const auto &value)
{
    auto answer = json::parse(chatAnswer(goodContent));
    answer.at_pointer(pointer) = json::value_from(value);
    return json::serialize(answer);
}

/// The content with one value in place of what stands at that place.
std::string contentWith(std::string_view pointer, const auto &value)
{
    auto content = json::parse(goodContent);
    content.at_pointer(pointer) = json::value_from(value);
    return json::serialize(content);
}

Suggestion readContent(const std::string &content)
{
    return readSuggestion(chatAnswer(content)).value();
}

} // namespace

TEST(SuggestionReply, isRead)
{
    EXPECT_EQ(readSuggestion(chatAnswer(goodContent)).value(), good);
}

TEST(SuggestionReply, isReadFromWithinAFenceAndWhiteSpace)
{
    const std::string content(goodContent);
    for (const auto &wrapped : {"  \n" + content + "\n\n", "```json\n" + content + "\n```",
                                "```\n" + content + "```", "\n ```json " + content + " ``` \n"})
        EXPECT_EQ(readContent(wrapped), good) << wrapped;
}

TEST(SuggestionReply, isReadFromServersThatLeaveOutWhatNobodyNeeds)
{
    json::object message{{"content", goodContent}};
    const json::object choice{{"message", std::move(message)}, {"finish_reason", nullptr}};
    EXPECT_EQ(readSuggestion(json::serialize(json::object{{"choices", json::array{choice}}})).value(), good);
}

TEST(SuggestionReply, isPassedOnWithTheKeysOfTheDesktopProgram)
{
    auto wordy = json::parse(goodContent).as_object();
    wordy["thoughts"] = "many";
    wordy["cards"].at(0).as_object()["difficulty"] = 3;
    EXPECT_EQ(json::parse(jsonOf(readContent(json::serialize(wordy)))), json::parse(goodContent));
}

TEST(SuggestionReply, aFaultOfTheAnswerIsToldApart)
{
    EXPECT_EQ(reasonAgainst(""), "the answer is no JSON object");
    EXPECT_EQ(reasonAgainst("<html>"), "the answer is no JSON object");
    EXPECT_EQ(reasonAgainst("[]"), "the answer is no JSON object");
    EXPECT_EQ(reasonAgainst("{}"), "the answer has no choice");
    EXPECT_EQ(reasonAgainst(answerWith("/choices", nullptr)), "the answer has no choice");
    EXPECT_EQ(reasonAgainst(answerWith("/choices", json::array())), "the answer has no choice");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0", "text")), "the answer has no choice");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/message", nullptr)), "the answer has no message");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/message/content", nullptr)), "the message has no text");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/message/content", json::array{"x"})),
              "the message has no text");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/message/refusal", "I cannot.")), "the model refused");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/finish_reason", "length")), "the answer was cut off");
    EXPECT_EQ(reasonAgainst(answerWith("/choices/0/finish_reason", "content_filter")),
              "the answer was held back by a filter");
}

TEST(SuggestionReply, aFaultOfTheTextIsToldApart)
{
    for (const auto *text : {"", "Sure! Here is your plan.", "[]", "\"{}\"", "{\"message\": \"cut o", "```",
                             "`````", "```json```"})
        EXPECT_EQ(reasonAgainstContent(text), "the message is no JSON object") << text;
    EXPECT_EQ(reasonAgainstContent("{}"), "the suggestion has no message");
    EXPECT_EQ(reasonAgainstContent(R"({"message": "m"})"), "the suggestion has no list of tasks");
    EXPECT_EQ(reasonAgainstContent(R"({"message": "m", "tasks": ["a"]})"),
              "the suggestion has no list of cards");
}

TEST(SuggestionReply, aValueOfAnotherKindIsNoSuggestion)
{
    for (const auto *pointer : {"/message", "/tasks", "/tasks/0", "/cards", "/cards/0", "/cards/0/topic",
                                "/cards/0/prompt", "/cards/0/answer"})
        for (const auto &value : {json::value(nullptr), json::value(7), json::value(json::object())})
            EXPECT_NE(reasonAgainstContent(contentWith(pointer, value)), "") << pointer << " " << value;
    EXPECT_NE(reasonAgainstContent(contentWith("/tasks", "one task")), "");
}

TEST(SuggestionReply, isCutToTheBounds)
{
    auto large = json::parse(goodContent).as_object();
    large["message"] = letters(suggestionBounds::message + 1);
    for (std::size_t number = 0; number < 100; ++number) {
        large["tasks"].as_array().push_back(json::string("task " + std::to_string(number)));
        large["cards"].as_array().push_back(large["cards"].at(0));
    }
    const auto suggestion = readContent(json::serialize(large));
    EXPECT_EQ(suggestion.message, letters(suggestionBounds::message));
    EXPECT_EQ(suggestion.tasks.size(), suggestionBounds::tasks);
    EXPECT_EQ(suggestion.tasks.front(), "Read chapter 3");
    EXPECT_EQ(suggestion.cards.size(), suggestionBounds::cards);
}

TEST(SuggestionReply, aTextOfTheLongestLengthIsKeptAndALongerOneLeftOut)
{
    const auto task = letters(suggestionBounds::task);
    EXPECT_EQ(readContent(contentWith("/tasks/0", task)).tasks.front(), task);
    EXPECT_EQ(readContent(contentWith("/tasks/0", task + "ж")).tasks,
              std::vector<std::string>{"Solve 5 problems"});
    for (const auto &[pointer, length] : {std::pair("/cards/0/topic", suggestionBounds::cardTopic),
                                          std::pair("/cards/0/prompt", suggestionBounds::cardPrompt),
                                          std::pair("/cards/0/answer", suggestionBounds::cardAnswer)}) {
        EXPECT_EQ(readContent(contentWith(pointer, letters(length))).cards.size(), 1U) << pointer;
        EXPECT_TRUE(readContent(contentWith(pointer, letters(length + 1))).cards.empty()) << pointer;
    }
}

TEST(SuggestionReply, emptyTextsAreLeftOut)
{
    EXPECT_EQ(readContent(contentWith("/tasks/0", " \t\n")).tasks,
              std::vector<std::string>{"Solve 5 problems"});
    EXPECT_TRUE(readContent(contentWith("/cards/0/prompt", " ")).cards.empty());
    EXPECT_TRUE(readContent(contentWith("/cards/0/answer", "")).cards.empty());
    EXPECT_EQ(readContent(contentWith("/cards/0/topic", " ")).cards.front().topic, "");
    EXPECT_EQ(reasonAgainstContent(R"({"message": "m", "tasks": [""], "cards": []})"),
              "the suggestion holds no task and no card");
}

TEST(SuggestionReply, isCleanedOfControlCharacters)
{
    EXPECT_EQ(readContent(contentWith("/message", " a\r\nb\tc\x1B[31m\u0085 ")).message, "a\nb c [31m");
    EXPECT_EQ(readContent(contentWith("/tasks/0", "a\nb\x7F")).tasks.front(), "a b");
    EXPECT_EQ(readContent(contentWith("/cards/0/answer", json::string("a\0b", 3))).cards.front().answer,
              "a b");
}

TEST(SuggestionReply, isUtf8)
{
    EXPECT_EQ(reasonAgainstContent("{\"message\": \"\xFF\"}"), "the answer is no JSON object");
    EXPECT_EQ(reasonAgainstContent(R"({"message": "\ud800", "tasks": ["a"], "cards": []})"),
              "the message is no JSON object");
}

TEST(SuggestionReply, isNotDeep)
{
    const auto deep = std::string(100'000, '[') + std::string(100'000, ']');
    EXPECT_EQ(reasonAgainst(deep), "the answer is no JSON object");
    EXPECT_EQ(reasonAgainstContent(deep), "the message is no JSON object");
    EXPECT_EQ(reasonAgainstContent(R"({"message": "m", "more": )" + deep + "}"),
              "the message is no JSON object");
}

TEST(SuggestionReply, theLastOfTwoFieldsCounts)
{
    const auto *const twice = R"({"message": "a", "message": "b", "tasks": ["t"], "cards": []})";
    EXPECT_EQ(readContent(twice).message, "b");
}
