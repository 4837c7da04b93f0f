#include "OAuthStates.h"

#include "secrets.h"
#include "storedTime.h"

#include <soci/soci.h>

OAuthStates::OAuthStates(Database &database, TimeSource now)
    : m_database(database)
    , m_now(std::move(now))
{}

boost::asio::awaitable<Result<>> OAuthStates::put(std::string state, OAuthAttempt attempt)
{
    const auto expiry = storedTime(m_now() + lifetime);
    auto hash = sha256Text(state);
    auto work = [=](DatabaseConnection &connection) {
        connection.session() << "INSERT INTO oauth_states "
                                "(state_hash, provider, verifier, nonce, language, expires_at) "
                                "VALUES (:hash, :provider, :verifier, :nonce, '', :expiry)", // no longer read
            soci::use(hash, "hash"), soci::use(attempt.provider, "provider"),
            soci::use(attempt.verifier, "verifier"), soci::use(attempt.nonce, "nonce"),
            soci::use(expiry, "expiry");
    };
    co_return co_await m_database.write(work);
}

boost::asio::awaitable<Result<std::optional<OAuthAttempt>>> OAuthStates::take(std::string state,
                                                                              std::string provider)
{
    const auto now = storedTime(m_now());
    auto hash = sha256Text(state);
    auto work = [=](DatabaseConnection &connection) -> std::optional<OAuthAttempt> {
        auto &session = connection.session();
        OAuthAttempt attempt;
        long long expiry = 0;
        session << "DELETE FROM oauth_states WHERE state_hash = :hash "
                   "RETURNING provider, verifier, nonce, expires_at",
            soci::use(hash, "hash"), soci::into(attempt.provider), soci::into(attempt.verifier),
            soci::into(attempt.nonce), soci::into(expiry);
        if (!session.got_data() || expiry <= now || attempt.provider != provider)
            return std::nullopt;
        return attempt;
    };
    co_return co_await m_database.write(work);
}
