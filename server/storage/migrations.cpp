#include "migrations.h"

#include <soci/soci.h>
#include <span>
#include <spdlog/spdlog.h>
#include <string>

namespace {

/// The same for both, where `postgresql` is empty.
struct SchemaStatement
{
    const char *sqlite;
    const char *postgresql = "";
};

/// What leads from one version to the next. What has been published is never changed: a later version mends
/// it.
struct Migration
{
    int version; ///< of the tables afterwards
    std::span<const SchemaStatement> statements;
};

// Times are Unix seconds. Hashes are base64url.
constexpr SchemaStatement signIn[] = {
    {R"(CREATE TABLE accounts (
            id INTEGER PRIMARY KEY AUTOINCREMENT,
            email TEXT NOT NULL UNIQUE,
            created_at BIGINT NOT NULL))",
     R"(CREATE TABLE accounts (
            id BIGINT GENERATED ALWAYS AS IDENTITY PRIMARY KEY,
            email TEXT NOT NULL UNIQUE,
            created_at BIGINT NOT NULL))"},
    {R"(CREATE TABLE sessions (
            token_hash TEXT PRIMARY KEY,
            account_id BIGINT NOT NULL REFERENCES accounts (id) ON DELETE CASCADE,
            provider TEXT NOT NULL,
            created_at BIGINT NOT NULL,
            expires_at BIGINT NOT NULL))"},
    {"CREATE INDEX sessions_account ON sessions (account_id)"},
    {"CREATE INDEX sessions_expiry ON sessions (expires_at)"},
    {R"(CREATE TABLE sign_in_codes (
            email TEXT PRIMARY KEY,
            code_hash TEXT NOT NULL,
            sent_at BIGINT NOT NULL,
            expires_at BIGINT NOT NULL,
            attempts INTEGER NOT NULL))"},
    {"CREATE INDEX sign_in_codes_expiry ON sign_in_codes (expires_at)"},
    {R"(CREATE TABLE oauth_states (
            state_hash TEXT PRIMARY KEY,
            provider TEXT NOT NULL,
            verifier TEXT NOT NULL,
            nonce TEXT NOT NULL,
            language TEXT NOT NULL,
            expires_at BIGINT NOT NULL))"},
    {"CREATE INDEX oauth_states_expiry ON oauth_states (expires_at)"},
    {R"(CREATE TABLE rate_limits (
            name TEXT NOT NULL,
            window_length BIGINT NOT NULL,
            window_end BIGINT NOT NULL,
            uses BIGINT NOT NULL,
            PRIMARY KEY (name, window_length, window_end)))"},
    {"CREATE INDEX rate_limits_end ON rate_limits (window_end)"},
};

constexpr Migration migrations[] = {{1, signIn}};

/// 0 where there are no tables yet.
int versionOf(soci::session &session)
{
    session << "CREATE TABLE IF NOT EXISTS schema_version (version INTEGER NOT NULL)";
    int version = 0;
    session << "SELECT version FROM schema_version", soci::into(version);
    return session.got_data() ? version : 0;
}

void apply(DatabaseConnection &connection, const Migration &migration)
{
    for (const auto &statement : migration.statements) {
        const bool isOwn = !connection.isSqlite() && *statement.postgresql;
        connection.session() << (isOwn ? statement.postgresql : statement.sqlite);
    }
}

Result<> migrateWithin(DatabaseConnection &connection)
{
    auto &session = connection.session();
    const int found = versionOf(session);
    const int newest = newestSchemaVersion();
    if (found > newest)
        return Failure{"the database is of version " + std::to_string(found) +
                       ", and this program knows only " + std::to_string(newest) +
                       ": install the newer program, or use a database of its own"};
    if (found == newest)
        return {};
    for (const auto &migration : migrations) {
        if (migration.version > found)
            apply(connection, migration);
    }
    session << "DELETE FROM schema_version";
    session << "INSERT INTO schema_version (version) VALUES (:version)", soci::use(newest, "version");
    spdlog::info("the database was of version {} and is of version {} now", found, newest);
    return {};
}

} // namespace

int newestSchemaVersion()
{
    return std::end(migrations)[-1].version;
}

Result<> migrate(DatabaseConnection &connection)
{
    connection.begin();
    try {
        connection.lockSchema();
        auto migrated = migrateWithin(connection);
        if (migrated)
            connection.commit();
        else
            connection.rollBack();
        return migrated;
    } catch (...) {
        connection.rollBack();
        throw;
    }
}
