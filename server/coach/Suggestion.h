#pragma once

#include <string>
#include <vector>

/// A recall card as the desktop program adds it.
struct SuggestedCard
{
    std::string topic; ///< may be empty
    std::string prompt;
    std::string answer; ///< alternatives are separated by "|"

    bool operator==(const SuggestedCard &) const = default;
};

/// What the coach suggests. All texts are UTF-8 without control characters, but for line ends in `message`.
struct Suggestion
{
    std::string message;
    std::vector<std::string> tasks;
    std::vector<SuggestedCard> cards;

    bool operator==(const Suggestion &) const = default;
};

/// {"message": ..., "tasks": [...], "cards": [{"topic": ..., "prompt": ..., "answer": ...}]}
std::string jsonOf(const Suggestion &suggestion);
