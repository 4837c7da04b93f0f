// A PostgreSQL that ends, hangs and comes back. Runs within postgresqlCluster.py, which does that to it.
#include "databaseTest.h"

#include <atomic>
#include <boost/asio/detached.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <gmock/gmock.h>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::HasSubstr;

/// "stop", "start", "freeze" or "thaw"; returns once it is done.
void tellServer(const std::string &command)
{
    const auto *const path = std::getenv("QUORVEL_TEST_POSTGRESQL_CONTROL");
    ASSERT_TRUE(path);
    boost::asio::io_context context;
    boost::asio::local::stream_protocol::socket socket(context);
    socket.connect(boost::asio::local::stream_protocol::endpoint(path));
    boost::asio::write(socket, boost::asio::buffer(command + "\n"));
    boost::asio::streambuf answer;
    boost::asio::read_until(socket, answer, '\n');
    ASSERT_EQ(std::string(static_cast<const char *>(answer.data().data()), answer.size()), "done\n");
}

boost::asio::awaitable<Result<>> put(Database &database, int number)
{
    auto work = [number](DatabaseConnection &connection) {
        connection.session() << "INSERT INTO things (number) VALUES (:number)", soci::use(number, "number");
    };
    co_return co_await database.write(work);
}

boost::asio::awaitable<Result<int>> count(Database &database)
{
    auto work = [](DatabaseConnection &connection) {
        int rows = -1;
        connection.session() << "SELECT count(*) FROM things", soci::into(rows);
        return rows;
    };
    co_return co_await database.read(work);
}

class PostgresqlFaultsTest : public testing::Test
{
protected:
    PostgresqlFaultsTest() { m_files.direct("CREATE TABLE things (number INTEGER)"); }

    TestDatabase m_files{"Postgresql"};
    std::unique_ptr<Database> m_database = m_files.open();
};

/// Writes numbers, several at a time, until it is told to end.
class Load
{
public:
    explicit Load(Database &database)
        : m_thread([this, &database] { run(database); })
    {}

    /// The numbers that were acknowledged.
    std::vector<int> end()
    {
        m_isEnding = true;
        m_thread.join();
        return m_acknowledged;
    }
    int failures() const { return m_failures; }
    std::size_t done() const { return m_done; }

private:
    void run(Database &database)
    {
        boost::asio::io_context context;
        for (int writer = 0; writer < 16; ++writer)
            boost::asio::co_spawn(context, writeOn(database), boost::asio::detached);
        context.run();
    }

    boost::asio::awaitable<void> writeOn(Database &database)
    {
        while (!m_isEnding) {
            const int number = m_next++;
            if (co_await put(database, number))
                m_acknowledged.push_back(number);
            else
                ++m_failures;
            ++m_done;
        }
    }

    std::atomic<bool> m_isEnding = false;
    std::atomic<std::size_t> m_done = 0;
    int m_next = 0;
    int m_failures = 0;
    std::vector<int> m_acknowledged;
    std::jthread m_thread;
};

void waitFor(const Load &load, std::size_t done)
{
    while (load.done() < done)
        std::this_thread::sleep_for(1ms);
}

} // namespace

TEST_F(PostgresqlFaultsTest, aRestartBetweenTwoRequestsGoesUnnoticed)
{
    EXPECT_TRUE(await(put(*m_database, 1)));
    EXPECT_EQ(*await(count(*m_database)), 1);
    tellServer("stop");
    tellServer("start");
    EXPECT_EQ(*await(count(*m_database)), 1);
    EXPECT_TRUE(await(put(*m_database, 2)));
    EXPECT_EQ(*await(count(*m_database)), 2);
}

TEST_F(PostgresqlFaultsTest, aConnectionThatAnOperatorEndsGoesUnnoticed)
{
    for (int number = 0; number < 8; ++number)
        EXPECT_TRUE(await(put(*m_database, number)));
    m_files.direct("SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
                   "WHERE datname = current_database() AND pid <> pg_backend_pid()");
    for (int number = 8; number < 16; ++number)
        EXPECT_TRUE(await(put(*m_database, number)));
    EXPECT_EQ(*await(count(*m_database)), 16);
}

TEST_F(PostgresqlFaultsTest, aTransactionWhoseEndIsUnknownIsAFailureAndNotRepeated)
{
    m_files.direct("CREATE FUNCTION leave() RETURNS trigger LANGUAGE plpgsql AS "
                   "'BEGIN PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NULL; END'");
    m_files.direct("CREATE CONSTRAINT TRIGGER leaving AFTER INSERT ON things DEFERRABLE INITIALLY DEFERRED "
                   "FOR EACH ROW EXECUTE FUNCTION leave()"); // within the commit
    std::atomic<int> runs = 0;
    auto work = [&runs](DatabaseConnection &connection) {
        ++runs;
        connection.session() << "INSERT INTO things (number) VALUES (1)";
    };
    const auto done = await(m_database->write(work));
    ASSERT_FALSE(done);
    EXPECT_THAT(done.error().reason, HasSubstr("while a transaction ended"));
    EXPECT_EQ(runs, 1);
}

TEST_F(PostgresqlFaultsTest, restartsUnderLoadLoseAndDoubleNothing)
{
    Load load(*m_database);
    for (int restart = 0; restart < 5; ++restart) {
        waitFor(load, load.done() + 300);
        tellServer("stop");
        tellServer("start");
    }
    waitFor(load, load.done() + 300);
    const auto acknowledged = load.end();
    EXPECT_GT(acknowledged.size(), 1500U);
    // Whose commit had an unknown end may be there; nothing is there twice.
    const auto rows = m_files.number("SELECT count(*) FROM things");
    EXPECT_EQ(m_files.number("SELECT count(DISTINCT number) FROM things"), rows);
    EXPECT_GE(rows, static_cast<long long>(acknowledged.size()));
    EXPECT_LE(rows, static_cast<long long>(acknowledged.size()) + load.failures());
    long long missing = 0;
    auto numbers = [](DatabaseConnection &connection) {
        std::vector<int> found(100'000);
        connection.session() << "SELECT number FROM things ORDER BY number", soci::into(found);
        return found;
    };
    const auto found = *await(m_database->read(numbers));
    for (const int number : acknowledged)
        missing += std::binary_search(found.begin(), found.end(), number) ? 0 : 1;
    EXPECT_EQ(missing, 0);
    std::cout << acknowledged.size() << " acknowledged, " << load.failures() << " failed\n";
}

TEST_F(PostgresqlFaultsTest, oneThatIsGoneMakesFailuresUntilItIsBack)
{
    EXPECT_TRUE(await(put(*m_database, 1)));
    tellServer("stop");
    const auto begin = Clock::now();
    std::vector<boost::asio::awaitable<Result<>>> tasks;
    for (int number = 0; number < 200; ++number)
        tasks.push_back(put(*m_database, number));
    for (const auto &done : awaitAll(std::move(tasks))) {
        ASSERT_FALSE(done);
        EXPECT_THAT(done.error().reason, HasSubstr("no connection"));
    }
    EXPECT_FALSE(await(m_database->isReady()));
    EXPECT_LT(Clock::now() - begin, 12s);
    tellServer("start");
    EXPECT_TRUE(await(m_database->isReady()));
    EXPECT_TRUE(await(put(*m_database, 2)));
    EXPECT_EQ(*await(count(*m_database)), 2);
}

TEST_F(PostgresqlFaultsTest, oneThatHangsMakesFailuresInSeconds)
{
    EXPECT_TRUE(await(put(*m_database, 1)));
    EXPECT_TRUE(await(m_database->isReady()));
    tellServer("freeze");
    const auto begin = Clock::now();
    std::vector<boost::asio::awaitable<Result<>>> tasks;
    for (int number = 0; number < 200; ++number)
        tasks.push_back(put(*m_database, 100 + number));
    for (const auto &done : awaitAll(std::move(tasks)))
        EXPECT_FALSE(done);
    const auto took = Clock::now() - begin;
    EXPECT_FALSE(Database::open({m_files.url(), 2})); // a second instance does not hang either
    tellServer("thaw");
    EXPECT_LT(took, 12s);
    EXPECT_TRUE(await(put(*m_database, 2)));
    EXPECT_TRUE(await(m_database->isReady()));
    EXPECT_EQ(m_files.number("SELECT count(*) FROM things WHERE number IN (1, 2)"), 2);
}

TEST_F(PostgresqlFaultsTest, oneThatHangsDoesNotKeepTheServiceFromEnding)
{
    EXPECT_TRUE(await(put(*m_database, 1)));
    tellServer("freeze");
    std::vector<boost::asio::awaitable<Result<>>> tasks;
    for (int number = 0; number < 4; ++number) // for the thread that is connected too
        tasks.push_back(put(*m_database, number));
    for (const auto &done : awaitAll(std::move(tasks)))
        EXPECT_FALSE(done);
    std::atomic<bool> hasEnded = false;
    std::jthread ending([&] {
        m_database.reset();
        hasEnded = true;
    });
    const auto limit = Clock::now() + 10s;
    while (!hasEnded && Clock::now() < limit)
        std::this_thread::sleep_for(10ms);
    EXPECT_TRUE(hasEnded);
    tellServer("thaw"); // whatever still waits for it
}

TEST_F(PostgresqlFaultsTest, aLockThatSomebodyHoldsMakesFailuresInSeconds)
{
    const auto holder = (*databaseEngine(m_files.url()))->connection(DatabaseAccess::Write);
    holder->open();
    holder->begin();
    holder->session() << "LOCK TABLE things IN ACCESS EXCLUSIVE MODE";
    const auto begin = Clock::now();
    EXPECT_FALSE(await(put(*m_database, 1)));
    EXPECT_LT(Clock::now() - begin, 8s);
    holder->rollBack();
    EXPECT_TRUE(await(put(*m_database, 2)));
}

TEST_F(PostgresqlFaultsTest, twoThatLockEachOtherBothSucceed)
{
    EXPECT_TRUE(await(put(*m_database, 1)));
    EXPECT_TRUE(await(put(*m_database, 2)));
    std::atomic<int> runs = 0;
    const auto crossing = [&](int first, int second) -> boost::asio::awaitable<Result<>> {
        auto work = [&runs, first, second](DatabaseConnection &connection) {
            auto &session = connection.session();
            session << "UPDATE things SET number = number WHERE number = :n", soci::use(first, "n");
            const int run = ++runs;
            while (run <= 2 && runs < 2) // both hold one before either wants the other
                std::this_thread::sleep_for(1ms);
            session << "UPDATE things SET number = number WHERE number = :n", soci::use(second, "n");
        };
        co_return co_await m_database->write(work);
    };
    std::vector<boost::asio::awaitable<Result<>>> tasks;
    tasks.push_back(crossing(1, 2));
    tasks.push_back(crossing(2, 1));
    for (const auto &done : awaitAll(std::move(tasks)))
        EXPECT_TRUE(done.has_value());
    EXPECT_EQ(runs, 3);
}

TEST_F(PostgresqlFaultsTest, aStatementThatFailedIsNotCommittedBecauseSomebodyCaughtIt)
{
    auto work = [](DatabaseConnection &connection) {
        connection.session() << "INSERT INTO things (number) VALUES (1)";
        try {
            connection.session() << "INSERT INTO missing (number) VALUES (1)";
        } catch (const std::exception &) {
            return;
        }
    };
    EXPECT_FALSE(await(m_database->write(work)));
    EXPECT_TRUE(await(put(*m_database, 2)));
    EXPECT_EQ(*await(count(*m_database)), 1);
}
