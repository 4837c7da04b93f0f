#pragma once

#include "Database.h"
#include "Result.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <cstdint>

/// Removes sessions, codes, states and counters that are over, a bounded number in one call: call it every
/// few minutes. Returns how many there were.
boost::asio::awaitable<Result<std::int64_t>> removeExpired(Database &database, std::chrono::sys_seconds now);
