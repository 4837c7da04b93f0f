#include "RateLimits.h"

#include "changedRows.h"
#include "storedTime.h"

namespace {

/// The first second that is in the window of `length` no longer.
long long windowEnd(long long now, long long length)
{
    return (now / length + 1) * length;
}

} // namespace

RateLimits::RateLimits(Database &database, TimeSource now)
    : m_database(database)
    , m_now(std::move(now))
{}

boost::asio::awaitable<Result<std::optional<std::chrono::seconds>>>
RateLimits::use(std::string key, int limit, std::chrono::seconds length)
{
    const auto now = storedTime(m_now());
    const long long seconds = length.count();
    const auto end = windowEnd(now, seconds);
    const std::optional<std::chrono::seconds> wait = std::chrono::seconds(end - now);
    if (limit <= 0)
        co_return wait;
    auto work = [=](DatabaseConnection &connection) {
        return changedRows((connection.session().prepare
                                << "INSERT INTO rate_limits (name, window_length, window_end, uses) "
                                   "VALUES (:name, :length, :end, 1) "
                                   "ON CONFLICT (name, window_length, window_end) "
                                   "DO UPDATE SET uses = rate_limits.uses + 1 "
                                   "WHERE rate_limits.uses < :limit",
                            soci::use(key, "name"), soci::use(seconds, "length"), soci::use(end, "end"),
                            soci::use(limit, "limit"))) == 1;
    };
    const auto isWithin = co_await m_database.write(work);
    if (!isWithin)
        co_return isWithin.error();
    if (*isWithin)
        co_return std::nullopt;
    co_return wait;
}

boost::asio::awaitable<Result<>> RateLimits::giveBack(std::string key, std::chrono::seconds length)
{
    const long long seconds = length.count();
    const auto end = windowEnd(storedTime(m_now()), seconds);
    auto work = [=](DatabaseConnection &connection) {
        connection.session() << "UPDATE rate_limits SET uses = uses - 1 WHERE name = :name "
                                "AND window_length = :length AND window_end = :end AND uses > 0",
            soci::use(key, "name"), soci::use(seconds, "length"), soci::use(end, "end");
    };
    co_return co_await m_database.write(work);
}
