#include "Database.h"

#include "DatabaseThreads.h"
#include "migrations.h"

#include <boost/asio/associated_executor.hpp>
#include <boost/asio/async_result.hpp>
#include <boost/asio/execution/outstanding_work.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/prefer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <soci/soci.h>

namespace {

/// Work, and the coroutine that waits for its answer.
template <class Handler>
class WaitedJob : public DatabaseJob
{
public:
    WaitedJob(std::function<void(DatabaseConnection &)> work, Handler handler)
        : m_work(std::move(work))
        , m_executor(boost::asio::prefer(boost::asio::get_associated_executor(handler),
                                         boost::asio::execution::outstanding_work.tracked))
        , m_handler(std::move(handler))
    {}

    void run(DatabaseConnection &connection) override { m_work(connection); }

private:
    void deliver(std::optional<Failure> problem) override
    {
        const auto executor = std::move(m_executor); // whose context waits for it no longer than this
        boost::asio::post(executor, [handler = std::move(m_handler), problem = std::move(problem)]() mutable {
            std::move(handler)(std::move(problem));
        });
    }

    using Executor =
        decltype(boost::asio::prefer(boost::asio::get_associated_executor(std::declval<Handler &>()),
                                     boost::asio::execution::outstanding_work.tracked));

    std::function<void(DatabaseConnection &)> m_work;
    Executor m_executor;
    Handler m_handler;
};

} // namespace

Result<std::unique_ptr<Database>> Database::open(const DatabaseSettings &settings)
{
    if (settings.connections < 2 || settings.connections > 64)
        return Failure{"the database needs 2 to 64 connections"};
    const auto engine = databaseEngine(settings.url);
    if (!engine)
        return engine.error();
    const auto connection = (*engine)->connection(DatabaseAccess::Write);
    try {
        connection->open();
        if (const auto migrated = migrate(*connection); !migrated)
            return migrated.error();
    } catch (const std::exception &error) {
        return Failure{"the database does not open: " + reasonOf(error)};
    }
    return std::unique_ptr<Database>(new Database(**engine, settings.connections));
}

Database::Database(const DatabaseEngine &engine, unsigned connections)
    : m_readers(std::make_unique<DatabaseThreads>(engine, DatabaseAccess::Read, engine.readers(connections)))
    , m_writers(std::make_unique<DatabaseThreads>(engine, DatabaseAccess::Write,
                                                  connections - engine.readers(connections)))
{}

Database::~Database() = default;

boost::asio::awaitable<bool> Database::isReady()
{
    auto work = [](DatabaseConnection &connection) {
        int number = 0;
        connection.session() << "SELECT version FROM schema_version", soci::into(number);
        return number;
    };
    const auto version = co_await read(work);
    co_return version.has_value() && *version > 0;
}

boost::asio::awaitable<std::optional<Failure>>
Database::runOnThread(DatabaseAccess access, std::function<void(DatabaseConnection &)> work)
{
    auto &threads = access == DatabaseAccess::Read ? *m_readers : *m_writers;
    auto initiate = [&threads](auto handler, std::function<void(DatabaseConnection &)> waiting) {
        threads.submit(
            std::make_shared<WaitedJob<decltype(handler)>>(std::move(waiting), std::move(handler)));
    };
    co_return co_await boost::asio::async_initiate<const boost::asio::use_awaitable_t<>,
                                                   void(std::optional<Failure>)>(
        initiate, boost::asio::use_awaitable, std::move(work));
}
