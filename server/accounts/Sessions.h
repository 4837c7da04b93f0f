#pragma once

#include "Database.h"
#include "Result.h"
#include "TimeSource.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Who is behind a token.
struct Account
{
    std::int64_t id = 0;
    std::string email;

    bool operator==(const Account &) const = default;
};

/// The sessions of all accounts. Only the SHA-256 of a token is stored.
class Sessions
{
public:
    /// How long a session lasts that nobody uses: half a year, from one exam to the next.
    static constexpr std::chrono::hours lifetime = std::chrono::days(180);

    Sessions(Database &database, TimeSource now);

    /// A session that counts from when `store` has run in somebody's transaction.
    struct NewSession
    {
        std::string token;
        std::function<void(DatabaseConnection &)> store;
    };

    /// A new session for the account of that address, which is made where there is none. `provider` is
    /// "email", "google" or "yandex". The address has passed mailAddress().
    NewSession prepare(const std::string &email, const std::string &provider) const;

    /// The same, stored at once. Returns the token.
    boost::asio::awaitable<Result<std::string>> begin(std::string email, std::string provider);

    /// The account of a valid token; none where there is no such session or it is over or revoked. Use within
    /// its lifetime prolongs a session, with at most one write a day.
    boost::asio::awaitable<Result<std::optional<Account>>> find(std::string token);

    /// Ends every session of that address. Returns how many there were.
    boost::asio::awaitable<Result<std::int64_t>> revoke(std::string email);
    /// Ends every session there is.
    boost::asio::awaitable<Result<std::int64_t>> revokeAll();

private:
    /// Only where it ends until `due`, so that of many uses at the same time one writes.
    boost::asio::awaitable<void> prolong(std::string hash, long long due, long long expiry);

    Database &m_database;
    TimeSource m_now;
};
