#include "PostgresqlConnection.h"

#include "percentEncoded.h"

#include <fcntl.h>
#include <libpq-fe.h>
#include <map>
#include <mutex>
#include <soci/postgresql/soci-postgresql.h>
#include <soci/soci.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// Of our own, so that no other program of the same database waits for us: "quorvel" in ASCII.
constexpr const char *schemaLock = "SELECT pg_advisory_xact_lock(31935022037627244)";

/// The five characters of SQLSTATE; empty where the error is not the server's.
std::string stateOf(const std::exception &error)
{
    const auto *const ofServer = dynamic_cast<const soci::postgresql_soci_error *>(&error);
    return ofServer ? ofServer->sqlstate() : "";
}

class PostgresqlConnection : public DatabaseConnection
{
public:
    PostgresqlConnection(std::string url, DatabaseAccess access)
        : m_url(std::move(url))
        , m_access(access)
    {}

    ~PostgresqlConnection() override { close(); }

    void open() override
    {
        try {
            makeSession().open(soci::postgresql, m_url);
            keepSocket();
            session() << (m_access == DatabaseAccess::Read ? "SET default_transaction_read_only = on"
                                                           : "SET default_transaction_read_only = off");
            for (const auto *setting :
                 {"SET statement_timeout = '5s'", "SET lock_timeout = '3s'",
                  "SET idle_in_transaction_session_timeout = '10s'", "SET client_min_messages = warning",
                  "SET default_transaction_isolation = 'read committed'"})
                session() << setting;
        } catch (...) {
            close();
            throw;
        }
    }

    void close() override
    {
        {
            const std::lock_guard lock(m_socketMutex);
            if (m_socket >= 0)
                ::close(m_socket);
            m_socket = -1;
        }
        DatabaseConnection::close();
    }

    void begin() override { session().begin(); }

    void commit() override
    {
        // Such a commit would be a rollback that says it went well.
        if (PQtransactionStatus(handle()) == PQTRANS_INERROR)
            throw std::runtime_error("a statement of the transaction had failed");
        session().commit();
    }

    void lockSchema() override
    {
        // Another instance may have much to change.
        session() << "SET LOCAL statement_timeout = '120s'";
        session() << "SET LOCAL lock_timeout = '120s'";
        session() << schemaLock;
    }

    bool isLost(const std::exception &error) const override
    {
        const auto state = stateOf(error);
        return !isOpen() || PQstatus(handle()) != CONNECTION_OK || state.starts_with("08") ||
               state.starts_with("57P");
    }

    bool isTransient(const std::exception &error) const override
    {
        const auto state = stateOf(error);
        return state == "40001" || state == "40P01"; // serialization failure, deadlock
    }

    void interrupt() override
    {
        const std::lock_guard lock(m_socketMutex);
        if (m_socket >= 0)
            ::shutdown(m_socket, SHUT_RDWR);
    }

    bool isSqlite() const override { return false; }

private:
    PGconn *handle() const
    {
        return static_cast<soci::postgresql_session_backend *>(session().get_backend())->conn_;
    }

    /// A descriptor of our own: libpq closes its one whenever it likes, and the number may be another's then.
    void keepSocket()
    {
        const std::lock_guard lock(m_socketMutex);
        m_socket = ::fcntl(PQsocket(handle()), F_DUPFD_CLOEXEC, 0);
    }

    std::string m_url;
    DatabaseAccess m_access;
    std::mutex m_socketMutex;
    int m_socket = -1;
};

class PostgresqlEngine : public DatabaseEngine
{
public:
    explicit PostgresqlEngine(std::string url)
        : m_url(std::move(url))
    {}

    std::unique_ptr<DatabaseConnection> connection(DatabaseAccess access) const override
    {
        return std::make_unique<PostgresqlConnection>(m_url, access);
    }

    unsigned readers(unsigned connections) const override { return (connections + 1) / 2; }

private:
    std::string m_url;
};

/// Everything as parameters of a URL, with their values encoded: SOCI looks for options of its own between
/// what it takes for spaces and equal signs.
std::string urlOf(const std::map<std::string, std::string> &parameters)
{
    std::string url = "postgresql://";
    char separator = '?';
    for (const auto &[name, value] : parameters) {
        url += separator + name + '=' + percentEncoded(value);
        separator = '&';
    }
    return url;
}

using ConnectionOptions = std::unique_ptr<PQconninfoOption, void (*)(PQconninfoOption *)>;

/// None where libpq does not understand the URL.
ConnectionOptions optionsOf(const std::string &url)
{
    char *complaint = nullptr;
    ConnectionOptions options(PQconninfoParse(url.c_str(), &complaint), &PQconninfoFree);
    PQfreemem(complaint); // it may quote the password
    return options;
}

} // namespace

bool isPostgresqlUrl(const std::string &url)
{
    return optionsOf(url) != nullptr;
}

Result<std::unique_ptr<DatabaseEngine>> postgresqlEngine(const std::string &url)
{
    const auto options = optionsOf(url);
    // A server that is gone without a word is noticed in seconds; what the URL says counts more.
    std::map<std::string, std::string> parameters{{"application_name", "quorvel-server"},
                                                  {"client_encoding", "UTF8"},
                                                  {"connect_timeout", "3"},
                                                  {"keepalives_idle", "10"},
                                                  {"keepalives_interval", "3"},
                                                  {"keepalives_count", "3"},
                                                  {"tcp_user_timeout", "8000"}};
    for (const auto *option = options.get(); option->keyword; ++option) {
        if (option->val)
            parameters[option->keyword] = option->val;
    }
    return std::unique_ptr<DatabaseEngine>(std::make_unique<PostgresqlEngine>(urlOf(parameters)));
}
