#include "SqliteConnection.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <unistd.h>

namespace {

/// How long another process may write until ours gives up.
constexpr int busyTimeout = 5'000; // ms

class SqliteConnection : public DatabaseConnection
{
public:
    SqliteConnection(std::string path, DatabaseAccess access)
        : m_path(std::move(path))
        , m_access(access)
    {}

    void open() override
    {
        try {
            makeSession().open(soci::sqlite3, "db=\"" + m_path + "\"");
            sqlite_api::sqlite3_busy_timeout(handle(), busyTimeout);
            // A transaction is on the disk before it is answered: after a power cut no code counts twice and
            // no revoked session lives again.
            for (const auto *pragma :
                 {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL", "PRAGMA foreign_keys = ON",
                  m_access == DatabaseAccess::Read ? "PRAGMA query_only = ON" : "PRAGMA query_only = OFF"})
                session() << pragma;
        } catch (...) {
            close();
            throw;
        }
    }

    // Immediate: two that read first and write then would each refuse the other.
    void begin() override { session() << "BEGIN IMMEDIATE"; }
    void commit() override { session() << "COMMIT"; }
    void lockSchema() override {} // nobody else writes

    void settle() override
    {
        // A statement that was not read to its end holds on to the past of the database.
        using namespace sqlite_api;
        if (sqlite3_txn_state(handle(), nullptr) == SQLITE_TXN_NONE)
            return;
        for (auto *statement = sqlite3_next_stmt(handle(), nullptr); statement;
             statement = sqlite3_next_stmt(handle(), statement)) {
            if (sqlite3_stmt_busy(statement))
                sqlite3_reset(statement);
        }
    }

    unsigned readsTogether() const override { return 16; }  // each takes microseconds
    unsigned writesTogether() const override { return 64; } // one wait for the disk instead of as many
    bool isSqlite() const override { return true; }

private:
    sqlite_api::sqlite3 *handle() const
    {
        return static_cast<soci::sqlite3_session_backend *>(session().get_backend())->conn_;
    }

    std::string m_path;
    DatabaseAccess m_access;
};

class SqliteEngine : public DatabaseEngine
{
public:
    explicit SqliteEngine(std::string path)
        : m_path(std::move(path))
    {}

    std::unique_ptr<DatabaseConnection> connection(DatabaseAccess access) const override
    {
        return std::make_unique<SqliteConnection>(m_path, access);
    }

    unsigned readers(unsigned connections) const override { return connections - 1; } // only one can write

private:
    std::string m_path;
};

} // namespace

bool isSqlitePath(const std::string &path)
{
    return !path.empty() && !path.starts_with(':') && path.find('"') == std::string::npos;
}

Result<std::unique_ptr<DatabaseEngine>> sqliteEngine(const std::string &path)
{
    // SQLite would make it readable for everybody; its further files take their modes from this one.
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return Failure{"the database's file " + path + " does not open: " + std::strerror(errno)};
    ::close(file);
    return std::unique_ptr<DatabaseEngine>(std::make_unique<SqliteEngine>(path));
}
