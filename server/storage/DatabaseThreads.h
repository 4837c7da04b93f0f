#pragma once

#include "DatabaseConnection.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// A piece of work that waits for a connection. It is answered once, from any thread.
class DatabaseJob
{
public:
    using Clock = std::chrono::steady_clock;

    virtual ~DatabaseJob() = default;

    /// May run more than once, where nothing of the runs before was stored.
    virtual void run(DatabaseConnection &connection) = 0;

    void answer(std::optional<Failure> problem)
    {
        if (!m_isAnswered.exchange(true))
            deliver(std::move(problem));
    }
    bool isAnswered() const { return m_isAnswered; }

    Clock::time_point asked; ///< set by the queue

protected:
    virtual void deliver(std::optional<Failure> problem) = 0;

private:
    std::atomic<bool> m_isAnswered = false;
};

/// Threads with one connection each, and the queue of what they do.
class DatabaseThreads
{
public:
    using Job = std::shared_ptr<DatabaseJob>;

    static constexpr std::size_t longestQueue = 8'192;
    /// All of a job: in the queue, on its way and through every repetition.
    static constexpr std::chrono::milliseconds patience{8'000};
    /// How long a job waits for a connection that was lost: PostgreSQL starts anew in less.
    static constexpr std::chrono::milliseconds patienceForConnection{3'000};

    DatabaseThreads(const DatabaseEngine &engine, DatabaseAccess access, unsigned count);
    /// Answers what still waits as failed.
    ~DatabaseThreads();

    void submit(const Job &job);

private:
    /// One thread. `running` is written by it under the mutex.
    struct Worker
    {
        std::unique_ptr<DatabaseConnection> connection;
        std::vector<Job> running;
        std::jthread thread;
    };

    void work(Worker &worker);
    /// Waits for jobs and makes them the running ones; false at the end of all.
    bool take(Worker &worker);
    /// All that run in one transaction; false where it did not work, and nothing is answered then.
    bool writeTogether(Worker &worker);
    void runAlone(Worker &worker, DatabaseJob &job);
    /// `isEnding` tells that the end of its transaction was asked for. Throws what fails.
    void attempt(DatabaseConnection &connection, DatabaseJob &job, bool &isEnding);
    /// Opens the connection where it is not; false where it answered the job as failed.
    bool connect(Worker &worker, DatabaseJob &job);
    /// Whether the end of all came meanwhile.
    bool pause(std::chrono::milliseconds length);

    /// Answers what takes too long.
    void watch();
    std::vector<Job> overdue();

    const DatabaseAccess m_access;
    std::mutex m_mutex;
    std::condition_variable m_wake;    ///< of threads that wait for jobs
    std::condition_variable m_endWake; ///< of threads that wait for time to pass
    std::deque<Job> m_queue;
    std::size_t m_together = 1; ///< jobs that a thread takes at a time
    std::size_t m_idle = 0;
    bool m_isEnding = false;
    bool m_haveEnded = false; ///< all threads but the watcher
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::jthread m_watcher;
};
