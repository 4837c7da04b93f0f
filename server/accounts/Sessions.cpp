#include "Sessions.h"

#include "changedRows.h"
#include "secrets.h"
#include "storedTime.h"

#include <spdlog/spdlog.h>

namespace {

struct FoundSession
{
    Account account;
    long long expiry = 0;
};

/// Asked with every request of a user, so it stays prepared.
class FindSession
{
public:
    explicit FindSession(soci::session &session)
        : m_statement((session.prepare << "SELECT accounts.id, accounts.email, sessions.expires_at "
                                          "FROM sessions JOIN accounts ON accounts.id = sessions.account_id "
                                          "WHERE sessions.token_hash = :hash AND sessions.expires_at > :now",
                       soci::use(m_hash, "hash"), soci::use(m_now, "now"), soci::into(m_id),
                       soci::into(m_email), soci::into(m_expiry)))
    {}

    std::optional<FoundSession> operator()(const std::string &hash, long long now)
    {
        m_hash = hash;
        m_now = now;
        if (!m_statement.execute(true))
            return std::nullopt;
        return FoundSession{{m_id, m_email}, m_expiry};
    }

private:
    std::string m_hash;
    long long m_now = 0;
    long long m_id = 0;
    std::string m_email;
    long long m_expiry = 0;
    soci::statement m_statement;
};

/// The account of that address, made where there is none.
long long accountFor(soci::session &session, const std::string &email, long long now)
{
    session
        << "INSERT INTO accounts (email, created_at) VALUES (:email, :now) ON CONFLICT (email) DO NOTHING",
        soci::use(email, "email"), soci::use(now, "now");
    long long id = 0;
    session << "SELECT id FROM accounts WHERE email = :email", soci::use(email, "email"), soci::into(id);
    if (!session.got_data())
        throw std::runtime_error("an account that was made is not there");
    return id;
}

} // namespace

Sessions::Sessions(Database &database, TimeSource now)
    : m_database(database)
    , m_now(std::move(now))
{}

Sessions::NewSession Sessions::prepare(const std::string &email, const std::string &provider) const
{
    const auto now = storedTime(m_now());
    const auto expiry = storedTime(m_now() + lifetime);
    auto token = newToken();
    auto store = [email, provider, now, expiry, hash = sha256Text(token)](DatabaseConnection &connection) {
        auto &session = connection.session();
        const auto account = accountFor(session, email, now);
        session << "INSERT INTO sessions (token_hash, account_id, provider, created_at, expires_at) "
                   "VALUES (:hash, :account, :provider, :now, :expiry)",
            soci::use(hash, "hash"), soci::use(account, "account"), soci::use(provider, "provider"),
            soci::use(now, "now"), soci::use(expiry, "expiry");
    };
    return {std::move(token), std::move(store)};
}

boost::asio::awaitable<Result<std::string>> Sessions::begin(std::string email, std::string provider)
{
    auto made = prepare(email, provider);
    const auto begun = co_await m_database.write(made.store);
    if (!begun)
        co_return begun.error();
    co_return Result<std::string>(boost::system::in_place_value,
                                  std::move(made.token)); // a Failure is made of a text too
}

boost::asio::awaitable<Result<std::optional<Account>>> Sessions::find(std::string token)
{
    if (token.size() != tokenLength)
        co_return std::nullopt;
    const auto now = m_now();
    auto hash = sha256Text(token);
    auto work = [hash, now = storedTime(now)](DatabaseConnection &connection) {
        return connection.kept<FindSession>()(hash, now);
    };
    const auto found = co_await m_database.read(work);
    if (!found)
        co_return found.error();
    if (!*found)
        co_return std::nullopt;
    const auto due = storedTime(now + lifetime - std::chrono::days(1));
    if ((*found)->expiry <= due)
        co_await prolong(std::move(hash), due, storedTime(now + lifetime));
    co_return (*found)->account;
}

boost::asio::awaitable<void> Sessions::prolong(std::string hash, long long due, long long expiry)
{
    auto work = [=](DatabaseConnection &connection) {
        connection.session()
            << "UPDATE sessions SET expires_at = :expiry WHERE token_hash = :hash AND expires_at <= :due",
            soci::use(expiry, "expiry"), soci::use(hash, "hash"), soci::use(due, "due");
    };
    const auto prolonged = co_await m_database.write(work);
    if (!prolonged) // it will be tried at the next use
        spdlog::warn("a session was not prolonged: {}", prolonged.error().reason);
}

boost::asio::awaitable<Result<std::int64_t>> Sessions::revoke(std::string email)
{
    auto work = [email](DatabaseConnection &connection) -> std::int64_t {
        return changedRows(
            (connection.session().prepare
                 << "DELETE FROM sessions WHERE account_id = (SELECT id FROM accounts WHERE email = :email)",
             soci::use(email, "email")));
    };
    co_return co_await m_database.write(work);
}

boost::asio::awaitable<Result<std::int64_t>> Sessions::revokeAll()
{
    auto work = [](DatabaseConnection &connection) -> std::int64_t {
        return changedRows(connection.session().prepare << "DELETE FROM sessions");
    };
    co_return co_await m_database.write(work);
}
