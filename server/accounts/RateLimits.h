#pragma once

#include "Database.h"
#include "Result.h"
#include "TimeSource.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <optional>
#include <string>

/// How often something may happen, counted in the database for all instances together.
class RateLimits
{
public:
    RateLimits(Database &database, TimeSource now);

    /// Counts one use of `key` ("coach:17", "code:203.0.113.7") in the window of `length` that this moment
    /// belongs to. None where it is within `limit`, else how long to wait for the next window (at least 1 s);
    /// a use beyond the limit is not counted.
    boost::asio::awaitable<Result<std::optional<std::chrono::seconds>>> use(std::string key, int limit,
                                                                            std::chrono::seconds length);

    /// Takes back one use of this window, which turned out not to be of the kind that is limited.
    boost::asio::awaitable<Result<>> giveBack(std::string key, std::chrono::seconds length);

private:
    Database &m_database;
    TimeSource m_now;
};
