#pragma once

#include "Result.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <typeindex>
#include <unordered_map>

namespace soci {
class session;
}

/// What may be done on a connection. The database itself refuses to write on one that only reads.
enum class DatabaseAccess { Read, Write };

/// One connection to the database, used by one thread at a time. What fails throws.
class DatabaseConnection
{
public:
    DatabaseConnection(const DatabaseConnection &) = delete;
    DatabaseConnection &operator=(const DatabaseConnection &) = delete;
    virtual ~DatabaseConnection();

    soci::session &session() const { return *m_session; }

    /// The one `Statement` of this connection, made from its session at the first use and prepared since: for
    /// what is asked often. It takes the session in its constructor.
    template <class Statement>
    Statement &kept()
    {
        auto &place = m_kept[std::type_index(typeid(Statement))];
        if (!place)
            place = std::make_shared<Statement>(session());
        return *static_cast<Statement *>(place.get());
    }

    /// What follows is for the storage itself.

    bool isOpen() const { return m_session != nullptr; }
    virtual void open() = 0;
    virtual void close();

    /// A transaction; on SQLite it is the only one that writes.
    virtual void begin() = 0;
    virtual void commit() = 0;
    /// Throws nothing: where it does not work, the connection is closed.
    void rollBack();

    /// Holds off every other instance until the transaction ends, while the tables are changed.
    virtual void lockSchema() = 0;
    /// Lets go of what a read has left under way.
    virtual void settle() {}

    /// Whether the connection must be made anew after that error.
    virtual bool isLost(const std::exception &) const { return false; }
    /// Whether the same work may succeed right away: another transaction was in its way.
    virtual bool isTransient(const std::exception &) const { return false; }
    /// Ends what its thread waits for, so that it fails. May be called from any thread.
    virtual void interrupt() {}
    /// How many reads one thread takes at a time, and how many writes one transaction, when as many wait.
    virtual unsigned readsTogether() const { return 1; }
    virtual unsigned writesTogether() const { return 1; }
    virtual bool isSqlite() const = 0;

protected:
    DatabaseConnection();

    /// A new session, which is not connected yet.
    soci::session &makeSession();

private:
    std::unique_ptr<soci::session> m_session;
    std::unordered_map<std::type_index, std::shared_ptr<void>> m_kept;
};

/// Makes connections to one database; they are not open yet.
class DatabaseEngine
{
public:
    virtual ~DatabaseEngine() = default;

    virtual std::unique_ptr<DatabaseConnection> connection(DatabaseAccess access) const = 0;
    /// How many of `connections` only read; the others write.
    virtual unsigned readers(unsigned connections) const = 0;
};

/// The path of "sqlite:PATH"; none where the URL is of another kind.
std::optional<std::string> sqlitePathOf(const std::string &url);

/// What is wrong with a URL for DatabaseSettings, as far as that can be told without opening anything.
std::optional<std::string> problemOfDatabaseUrl(const std::string &url);

/// Of the URLs of DatabaseSettings.
Result<std::unique_ptr<DatabaseEngine>> databaseEngine(const std::string &url);

/// The first line of what an error says: the database's own words, without the values it was asked with.
std::string reasonOf(const std::exception &error);
