#pragma once

#include "Language.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// What a student asks the coach: all that another service learns.
struct SuggestionRequest
{
    static constexpr std::size_t longestTopic = 2000;    ///< characters
    static constexpr std::size_t longestProgress = 4000; ///< characters

    std::string topic; ///< empty: a plan for an exam in general is asked for
    Language language = Language::English;
    std::string progress;

    bool operator==(const SuggestionRequest &) const = default;
};

/// Reads {"topic": ..., "language": "en" or "ru", "progress": ...}; none where a field is missing or of
/// another kind. The desktop program makes the progress by itself, so a long one is cut; the topic is what
/// the student wrote, so one that is too long is left to be refused.
std::optional<SuggestionRequest> readSuggestionRequest(std::string_view body);

/// Whether the topic is longer than a coach is asked about.
bool isTopicTooLong(const SuggestionRequest &request);

/// The body of the chat-completions request: messages for the model, and the schema of its answer.
std::string chatBody(const SuggestionRequest &request, const std::string &model);
