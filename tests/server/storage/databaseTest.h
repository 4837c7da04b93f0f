#pragma once

#include "Database.h"

#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <soci/soci.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

/// Runs it to its end on an I/O context of its own.
template <class Value>
Value await(boost::asio::awaitable<Value> task)
{
    boost::asio::io_context context;
    std::optional<Value> value;
    boost::asio::co_spawn(context, std::move(task), [&value](std::exception_ptr error, Value result) {
        if (error)
            std::rethrow_exception(error);
        value = std::move(result);
    });
    context.run();
    return std::move(*value);
}

/// Runs all of them at the same time.
template <class Value>
std::vector<Value> awaitAll(std::vector<boost::asio::awaitable<Value>> tasks)
{
    boost::asio::io_context context;
    std::vector<Value> values;
    for (auto &task : tasks) {
        boost::asio::co_spawn(context, std::move(task), [&values](std::exception_ptr error, Value result) {
            if (error)
                std::rethrow_exception(error);
            values.push_back(std::move(result));
        });
    }
    context.run();
    return values;
}

/// A folder that is gone with the test.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        auto pattern = (std::filesystem::temp_directory_path() / "quorvel-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// The URL of the PostgreSQL that tests may use; none where nobody named one.
inline std::optional<std::string> postgresqlForTests()
{
    const auto *const url = std::getenv("QUORVEL_TEST_POSTGRESQL");
    return url ? std::optional<std::string>(url) : std::nullopt;
}

/// An empty database of one test.
class TestDatabase
{
public:
    explicit TestDatabase(const std::string &engine)
    {
        if (engine == "Sqlite") {
            m_url = "sqlite:" + (m_folder.path() / "test.db").string();
            return;
        }
        const auto server = postgresqlForTests().value();
        m_schema = "test_" + std::to_string(::getpid()) + '_' + std::to_string(s_count++);
        m_url = server + (server.find('?') == std::string::npos ? '?' : '&') + "options=-csearch_path%3D" +
                m_schema;
        direct("CREATE SCHEMA " + m_schema);
    }
    TestDatabase(const TestDatabase &) = delete;
    TestDatabase &operator=(const TestDatabase &) = delete;
    ~TestDatabase()
    {
        try {
            if (!m_schema.empty())
                direct("DROP SCHEMA " + m_schema + " CASCADE");
        } catch (const std::exception &error) {
            ADD_FAILURE() << error.what();
        }
    }

    const std::string &url() const { return m_url; }
    std::filesystem::path file() const { return m_folder.path() / "test.db"; }
    bool isSqlite() const { return m_schema.empty(); }

    /// One more instance of the service, so to speak.
    std::unique_ptr<Database> open() const
    {
        auto database = Database::open({m_url, 4});
        if (!database)
            throw std::runtime_error(database.error().reason);
        return std::move(*database);
    }

    /// One statement past the service.
    void direct(const std::string &statement) const
    {
        const auto connection = (*databaseEngine(m_url))->connection(DatabaseAccess::Write);
        connection->open();
        connection->session() << statement;
    }

    /// The one number that a query past the service has.
    long long number(const std::string &query) const
    {
        const auto connection = (*databaseEngine(m_url))->connection(DatabaseAccess::Read);
        connection->open();
        long long value = -1;
        connection->session() << query, soci::into(value);
        return value;
    }

private:
    static inline int s_count = 0;

    TemporaryFolder m_folder;
    std::string m_schema;
    std::string m_url;
};

/// Runs on SQLite always, and on PostgreSQL where there is one for tests.
class DatabaseTest : public testing::TestWithParam<std::string>
{
protected:
    TestDatabase m_files{GetParam()};
    std::unique_ptr<Database> m_database = m_files.open();
};

inline auto enginesForTests()
{
    std::vector<std::string> engines{"Sqlite"};
    if (postgresqlForTests())
        engines.emplace_back("Postgresql");
    return testing::ValuesIn(engines);
}

#define QUORVEL_ON_EVERY_ENGINE(suite)                                                                       \
    INSTANTIATE_TEST_SUITE_P(On, suite, enginesForTests(), [](const auto &engine) { return engine.param; })
