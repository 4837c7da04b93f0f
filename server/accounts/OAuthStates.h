#pragma once

#include "Database.h"
#include "Result.h"
#include "TimeSource.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <optional>
#include <string>

/// What a sign-in by a provider must remember until its answer comes back.
struct OAuthAttempt
{
    std::string provider; ///< "google" or "yandex"
    std::string verifier; ///< of PKCE
    std::string nonce;    ///< empty where the provider has none

    bool operator==(const OAuthAttempt &) const = default;
};

/// The sign-ins by providers that are under way, by their state. Only the SHA-256 of a state is stored.
class OAuthStates
{
public:
    static constexpr std::chrono::minutes lifetime{10};

    OAuthStates(Database &database, TimeSource now);

    boost::asio::awaitable<Result<>> put(std::string state, OAuthAttempt attempt);

    /// Takes it out, so that a state counts once; none where there is none, it is over, or it is another
    /// provider's (it is taken out all the same).
    boost::asio::awaitable<Result<std::optional<OAuthAttempt>>> take(std::string state, std::string provider);

private:
    Database &m_database;
    TimeSource m_now;
};
