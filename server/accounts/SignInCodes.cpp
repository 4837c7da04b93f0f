#include "SignInCodes.h"

#include "changedRows.h"
#include "secrets.h"
#include "storedTime.h"

#include <algorithm>

SignInCodes::SignInCodes(Database &database, TimeSource now, std::string key)
    : m_database(database)
    , m_now(std::move(now))
    , m_key(std::move(key))
{}

std::string SignInCodes::hashOf(const std::string &email, const std::string &code) const
{
    // With the address in it, so that a stored hash fits no other address.
    return base64url(hmacSha256(m_key, "sign-in code\n" + email + '\n' + code));
}

boost::asio::awaitable<Result<std::variant<std::string, SignInCodes::TooSoon>>>
SignInCodes::create(std::string email)
{
    const auto now = storedTime(m_now());
    const auto expiry = storedTime(m_now() + lifetime);
    const long long gap = beforeResend.count();
    auto code = newCode();
    auto work = [email, now, expiry, gap, hash = hashOf(email, code)](DatabaseConnection &connection) {
        auto &session = connection.session();
        // One sent in what is far in the future was sent before the clock was set back.
        const auto before = now - gap;
        const auto beyond = now + gap;
        if (changedRows((session.prepare
                             << "INSERT INTO sign_in_codes (email, code_hash, sent_at, expires_at, attempts) "
                                "VALUES (:email, :hash, :now, :expiry, 0) ON CONFLICT (email) DO UPDATE SET "
                                "code_hash = excluded.code_hash, sent_at = excluded.sent_at, "
                                "expires_at = excluded.expires_at, attempts = 0 "
                                "WHERE sign_in_codes.sent_at <= :before OR sign_in_codes.sent_at > :beyond",
                         soci::use(email, "email"), soci::use(hash, "hash"), soci::use(now, "now"),
                         soci::use(expiry, "expiry"), soci::use(before, "before"),
                         soci::use(beyond, "beyond"))) == 1)
            return 0LL;
        long long sent = now;
        session << "SELECT sent_at FROM sign_in_codes WHERE email = :email", soci::use(email, "email"),
            soci::into(sent);
        return std::clamp(sent + gap - now, 1LL, gap);
    };
    const auto wait = co_await m_database.write(work);
    if (!wait)
        co_return wait.error();
    if (*wait > 0)
        co_return TooSoon{std::chrono::seconds(*wait)};
    co_return std::variant<std::string, TooSoon>(std::move(code));
}

boost::asio::awaitable<Result<>> SignInCodes::discard(std::string email)
{
    auto work = [email](DatabaseConnection &connection) {
        connection.session() << "DELETE FROM sign_in_codes WHERE email = :email", soci::use(email, "email");
    };
    co_return co_await m_database.write(work);
}

boost::asio::awaitable<Result<SignInCodes::Verification>>
SignInCodes::verify(std::string email, std::string code, std::function<void(DatabaseConnection &)> whenRight)
{
    const auto now = storedTime(m_now());
    auto work = [email, now, whenRight, given = hashOf(email, code)](DatabaseConnection &connection) {
        auto &session = connection.session();
        const int most = attempts;
        // Others who try the same code wait here until this transaction is over.
        if (changedRows((session.prepare << "UPDATE sign_in_codes SET attempts = attempts + 1 "
                                            "WHERE email = :email AND attempts < :most AND expires_at > :now",
                         soci::use(email, "email"), soci::use(most, "most"), soci::use(now, "now"))) != 1)
            return Verification{Verdict::Wrong, false};
        std::string stored;
        session << "SELECT code_hash FROM sign_in_codes WHERE email = :email", soci::use(email, "email"),
            soci::into(stored);
        if (!isSameSecret(stored, given))
            return Verification{Verdict::Wrong, true};
        // The row stays: it tells when another code may be sent.
        session << "UPDATE sign_in_codes SET code_hash = '', attempts = :most WHERE email = :email",
            soci::use(most, "most"), soci::use(email, "email");
        if (whenRight)
            whenRight(connection);
        return Verification{Verdict::Right, true};
    };
    co_return co_await m_database.write(work);
}
