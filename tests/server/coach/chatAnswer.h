#pragma once

#include <boost/json.hpp>
#include <string>
#include <string_view>

/// The body of a chat-completions answer with that text, as an endpoint that finished writes it.
inline std::string chatAnswer(std::string_view content)
{
    namespace json = boost::json;
    json::object message{{"role", "assistant"}, {"content", content}, {"refusal", nullptr}};
    json::object choice{{"index", 0}, {"message", std::move(message)}, {"finish_reason", "stop"}};
    return json::serialize(json::object{{"id", "chatcmpl-1"}, {"choices", json::array{std::move(choice)}}});
}

constexpr std::string_view goodContent =
    R"({"message": "Begin with the rules.", "tasks": ["Read chapter 3", "Solve 5 problems"],)"
    R"( "cards": [{"topic": "Derivatives", "prompt": "Derivative of x^2?", "answer": "2x|2*x"}]})";
