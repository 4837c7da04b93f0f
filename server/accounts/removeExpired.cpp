#include "removeExpired.h"

#include "changedRows.h"
#include "storedTime.h"

namespace {

/// In one transaction, so that nobody waits long behind it.
constexpr int atOnce = 500;
constexpr int mostTimes = 20;

struct Table
{
    const char *name;
    const char *key; ///< of rows; several columns in brackets
    const char *end; ///< the column with the first second that a row does not count in
};

constexpr Table tables[] = {
    {"sessions", "token_hash", "expires_at"},
    {"sign_in_codes", "email", "expires_at"},
    {"oauth_states", "state_hash", "expires_at"},
    {"rate_limits", "(name, window_length, window_end)", "window_end"},
};

std::string removal(const Table &table)
{
    std::string columns = table.key;
    if (columns.starts_with('('))
        columns = columns.substr(1, columns.size() - 2);
    const std::string name = table.name;
    return "DELETE FROM " + name + " WHERE " + table.key + " IN (SELECT " + columns + " FROM " + name +
           " WHERE " + table.end + " <= :now LIMIT " + std::to_string(atOnce) + ")";
}

} // namespace

boost::asio::awaitable<Result<std::int64_t>> removeExpired(Database &database, std::chrono::sys_seconds now)
{
    std::int64_t removed = 0;
    for (const auto &table : tables) {
        for (int times = 0; times < mostTimes; ++times) {
            auto work = [statementText = removal(table),
                         now = storedTime(now)](DatabaseConnection &connection) {
                return changedRows((connection.session().prepare << statementText, soci::use(now, "now")));
            };
            const auto some = co_await database.write(work);
            if (!some)
                co_return some.error();
            removed += *some;
            if (*some < atOnce)
                break;
        }
    }
    co_return removed;
}
