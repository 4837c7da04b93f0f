#include "DatabaseThreads.h"

#include <algorithm>
#include <random>
#include <spdlog/spdlog.h>

namespace {

using namespace std::chrono_literals;

constexpr auto betweenAttempts = 200ms; ///< to connect
constexpr auto betweenLooks = 250ms;    ///< for what takes too long
constexpr int mostTries = 5;            ///< of the same work

std::chrono::milliseconds shortPause()
{
    thread_local std::minstd_rand random(std::random_device{}());
    return std::chrono::milliseconds(std::uniform_int_distribution(5, 50)(random));
}

} // namespace

DatabaseThreads::DatabaseThreads(const DatabaseEngine &engine, DatabaseAccess access, unsigned count)
    : m_access(access)
{
    for (unsigned number = 0; number < count; ++number) {
        auto worker = std::make_unique<Worker>();
        worker->connection = engine.connection(access);
        m_workers.push_back(std::move(worker));
    }
    const auto &first = *m_workers.front()->connection;
    m_together = access == DatabaseAccess::Read ? first.readsTogether() : first.writesTogether();
    for (auto &worker : m_workers)
        worker->thread = std::jthread([this, &worker = *worker] { work(worker); });
    m_watcher = std::jthread([this] { watch(); });
}

DatabaseThreads::~DatabaseThreads()
{
    std::deque<Job> left;
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        left.swap(m_queue);
    }
    m_wake.notify_all();
    m_endWake.notify_all();
    for (const auto &job : left)
        job->answer(Failure{"the service ends"});
    for (auto &worker : m_workers)
        worker->thread.join(); // the watcher still ends what hangs
    {
        const std::lock_guard lock(m_mutex);
        m_haveEnded = true;
    }
    m_endWake.notify_all();
}

void DatabaseThreads::submit(const Job &job)
{
    job->asked = DatabaseJob::Clock::now();
    std::optional<Failure> problem;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isEnding)
            problem = Failure{"the service ends"};
        else if (m_queue.size() >= longestQueue)
            problem = Failure{"too many wait for the database"};
        else
            m_queue.push_back(job);
        // A thread that is awake takes the next ones by itself: waking another costs more than it helps
        // where work is short.
        if (m_idle > 0 && (m_idle == m_workers.size() || m_queue.size() >= m_together))
            m_wake.notify_one();
    }
    if (problem)
        job->answer(std::move(problem));
}

void DatabaseThreads::work(Worker &worker)
{
    while (take(worker)) {
        if (worker.running.size() == 1 || m_access == DatabaseAccess::Read || !writeTogether(worker)) {
            for (const auto &job : worker.running)
                runAlone(worker, *job);
        }
    }
    worker.connection->close();
}

bool DatabaseThreads::take(Worker &worker)
{
    std::unique_lock lock(m_mutex);
    worker.running.clear();
    ++m_idle;
    m_wake.wait(lock, [this] { return m_isEnding || !m_queue.empty(); });
    --m_idle;
    while (!m_queue.empty() && worker.running.size() < m_together) {
        worker.running.push_back(std::move(m_queue.front()));
        m_queue.pop_front();
    }
    return !worker.running.empty();
}

bool DatabaseThreads::writeTogether(Worker &worker)
{
    auto &connection = *worker.connection;
    if (!connect(worker, *worker.running.front()))
        return false;
    try {
        connection.begin();
        for (const auto &job : worker.running) {
            if (!job->isAnswered())
                job->run(connection);
        }
        connection.commit();
    } catch (const std::exception &) {
        connection.rollBack(); // each alone will show whose mistake it was
        return false;
    }
    for (const auto &job : worker.running)
        job->answer(std::nullopt);
    return true;
}

void DatabaseThreads::runAlone(Worker &worker, DatabaseJob &job)
{
    for (int tries = 1; !job.isAnswered() && connect(worker, job); ++tries) {
        auto &connection = *worker.connection;
        bool isEnding = false;
        try {
            attempt(connection, job, isEnding);
            return job.answer(std::nullopt);
        } catch (const std::exception &error) {
            const auto reason = reasonOf(error);
            const bool isLost = connection.isLost(error);
            const bool isTransient = connection.isTransient(error);
            if (isLost) {
                spdlog::warn("a connection to the database is lost: {}", reason);
                connection.close();
            } else if (m_access == DatabaseAccess::Write) {
                connection.rollBack();
            } else {
                connection.settle();
            }
            if (isLost && isEnding)
                return job.answer(Failure{"the connection was lost while a transaction ended: " + reason});
            if ((!isLost && !isTransient) || tries == mostTries)
                return job.answer(Failure{reason});
            if (isTransient)
                pause(shortPause());
        }
    }
}

void DatabaseThreads::attempt(DatabaseConnection &connection, DatabaseJob &job, bool &isEnding)
{
    if (m_access == DatabaseAccess::Read) {
        job.run(connection);
        connection.settle();
        return;
    }
    connection.begin();
    job.run(connection);
    if (job.isAnswered())
        throw std::runtime_error("it took too long");
    isEnding = true;
    connection.commit();
}

bool DatabaseThreads::connect(Worker &worker, DatabaseJob &job)
{
    auto &connection = *worker.connection;
    while (!connection.isOpen()) {
        try {
            connection.open();
        } catch (const std::exception &error) {
            const bool isLate = DatabaseJob::Clock::now() - job.asked >= patienceForConnection;
            if (isLate || pause(betweenAttempts)) {
                job.answer(Failure{"no connection to the database: " + reasonOf(error)});
                return false;
            }
        }
    }
    return true;
}

bool DatabaseThreads::pause(std::chrono::milliseconds length)
{
    std::unique_lock lock(m_mutex);
    return m_endWake.wait_for(lock, length, [this] { return m_isEnding; });
}

void DatabaseThreads::watch()
{
    for (;;) {
        std::vector<Job> late;
        {
            std::unique_lock lock(m_mutex);
            if (m_endWake.wait_for(lock, betweenLooks, [this] { return m_haveEnded; }))
                return;
            late = overdue();
        }
        if (!late.empty())
            spdlog::warn("the database did not answer {} requests in time", late.size());
        for (const auto &job : late)
            job->answer(Failure{"the database did not answer in time"});
    }
}

std::vector<DatabaseThreads::Job> DatabaseThreads::overdue()
{
    std::vector<Job> late;
    const auto limit = DatabaseJob::Clock::now() - patience;
    while (!m_queue.empty() && m_queue.front()->asked < limit) {
        late.push_back(std::move(m_queue.front()));
        m_queue.pop_front();
    }
    for (const auto &worker : m_workers) {
        if (worker->running.empty() || worker->running.front()->asked >= limit)
            continue;
        worker->connection->interrupt();
        for (const auto &job : worker->running) {
            if (job->asked < limit && !job->isAnswered())
                late.push_back(job);
        }
    }
    return late;
}
