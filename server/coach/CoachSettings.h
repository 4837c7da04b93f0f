#pragma once

#include <chrono>
#include <string>

struct CoachSettings
{
    std::string url; ///< of the chat completions: "https://HOST/v1/chat/completions"; empty: no coach
    std::string key; ///< sent as a bearer token; empty: none
    std::string model = "gpt-4o-mini";
    int perHour = 10; ///< suggestions for one account
    int perDay = 40;
    std::chrono::seconds timeout{50}; ///< for all tries together; the desktop program waits 60 s
    int atOnce = 2000;                ///< suggestions that may be under way; beyond that it refuses at once
};
