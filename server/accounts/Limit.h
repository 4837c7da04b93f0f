#pragma once

#include "RateLimits.h"
#include "Refusal.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <optional>
#include <span>
#include <string>

/// How often something may happen within `length`, and what is said where it has.
struct Limit
{
    std::string key; ///< as in RateLimits
    int most = 0;
    std::chrono::seconds length{0};
    Refusal (*refusal)(std::chrono::seconds retryAfter) = refusals::tooMany;
};

/// Counts one use of each, in turn, up to the first that is used up: that one's refusal. None where all are
/// kept. `limits` live until it has ended.
boost::asio::awaitable<std::optional<Refusal>> useEach(RateLimits &counters, std::span<const Limit> limits);

/// Takes one use back; where that does not work, it counts as one more, and the log says so.
boost::asio::awaitable<void> giveBack(RateLimits &counters, const Limit &limit);
