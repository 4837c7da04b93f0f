#pragma once

#include "Result.h"
#include "Suggestion.h"

#include <cstddef>
#include <string_view>

/// What a suggestion is cut to before it is passed on, in characters and numbers.
namespace suggestionBounds {
constexpr std::size_t message = 2000;
constexpr std::size_t tasks = 20;
constexpr std::size_t task = 300;
constexpr std::size_t cards = 30;
constexpr std::size_t cardTopic = 200;
constexpr std::size_t cardPrompt = 500;
constexpr std::size_t cardAnswer = 300;
} // namespace suggestionBounds

/// Reads the body of a chat-completions answer. The model was told what to answer, but servers differ in
/// whether they hold it to that. A task or card that is empty or beyond the bounds is left out, the lists and
/// the message are cut to them. Fails where the model did not finish or refused, where anything is of
/// another kind than asked for, and where nothing is left. A reason holds nothing of what the model wrote.
Result<Suggestion> readSuggestion(std::string_view body);
