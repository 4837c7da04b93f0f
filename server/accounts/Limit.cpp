#include "Limit.h"

#include <spdlog/spdlog.h>

boost::asio::awaitable<std::optional<Refusal>> useEach(RateLimits &counters, std::span<const Limit> limits)
{
    for (const auto &limit : limits) {
        const auto wait = co_await counters.use(limit.key, limit.most, limit.length);
        if (!wait) {
            spdlog::error("a limit could not be looked up: {}", wait.error().reason);
            co_return refusals::unavailable();
        }
        if (*wait)
            co_return limit.refusal(**wait);
    }
    co_return std::nullopt;
}

boost::asio::awaitable<void> giveBack(RateLimits &counters, const Limit &limit)
{
    if (const auto given = co_await counters.giveBack(limit.key, limit.length); !given)
        spdlog::warn("a use was not given back: {}", given.error().reason);
}
