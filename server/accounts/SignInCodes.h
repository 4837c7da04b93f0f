#pragma once

#include "Database.h"
#include "Result.h"
#include "TimeSource.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <variant>

/// The codes that were sent by mail. Only an HMAC of a code under the service's key is stored: a million
/// hashes are guessed at once.
class SignInCodes
{
public:
    static constexpr std::chrono::minutes lifetime{10};
    static constexpr int attempts = 5;                      ///< wrong ones end a code
    static constexpr std::chrono::seconds beforeResend{60}; ///< from one code to the next of the same address

    /// Another code may be asked for after that time.
    struct TooSoon
    {
        std::chrono::seconds wait;
    };
    enum class Verdict { Right, Wrong };
    struct Verification
    {
        Verdict verdict = Verdict::Wrong;
        bool isCompared = false; ///< false where there was no code, or none that still counted
    };

    /// `key` is the service's secret, of at least 32 bytes.
    SignInCodes(Database &database, TimeSource now, std::string key);

    /// A new code for that address, in place of any other. The address has passed mailAddress().
    boost::asio::awaitable<Result<std::variant<std::string, TooSoon>>> create(std::string email);

    /// Forgets a code that could not be sent, so that another may be asked for at once.
    boost::asio::awaitable<Result<>> discard(std::string email);

    /// Right once only. An attempt counts before it is compared, so that no two at the same time are one.
    /// `whenRight` runs in the same transaction, so that a code is used up only where it led to something.
    boost::asio::awaitable<Result<Verification>>
    verify(std::string email, std::string code, std::function<void(DatabaseConnection &)> whenRight = {});

private:
    std::string hashOf(const std::string &email, const std::string &code) const;

    Database &m_database;
    TimeSource m_now;
    std::string m_key;
};
