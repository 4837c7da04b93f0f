#pragma once

#include "FileHandle.h"
#include "ProcFiles.h"

#include <chrono>
#include <unordered_map>
#include <vector>

/// Names one process for good: a number alone passes on to others.
struct ProcessKey
{
    qint32 id = 0;
    quint64 startTime = 0; ///< clock ticks since boot

    bool operator==(const ProcessKey &) const = default;
};

/// The living processes of one user, kept up to date at little cost: each is read when it appears, again
/// while it is young (a young process still turns into the program it was started for); later its executable
/// is compared every 10 s and the rest every 30 s, a part of the processes each second.
class ProcessTable
{
public:
    /// Another root than "/proc" is a picture of one: its processes are never touched.
    ProcessTable(const QString &root, uid_t user);

    bool readable() const { return m_files.readable(); }

    /// Takes in what has changed. `now` is time since boot.
    void refresh(std::chrono::nanoseconds now);

    /// Takes out the watched processes that have ended since; costs one system call.
    void noticeEnds();

    /// Grows whenever processes() became different.
    quint64 revision() const { return m_revision; }

    const std::unordered_map<qint32, ProcessFacts> &processes() const { return m_processes; }
    const ProcessFacts *process(qint32 id) const;

    /// Holds on to exactly these from now on: their end is noticed at once and a signal cannot miss them.
    void watch(const std::vector<ProcessKey> &processes);

    /// Sends a signal to that process and no other; says whether it was sent.
    bool signal(const ProcessKey &process, int number);

private:
    /// One number in /proc.
    struct Slot
    {
        ProcessNumber number;
        std::chrono::nanoseconds seen{};
        std::chrono::nanoseconds nextLook{};
        std::chrono::nanoseconds nextReading{}; ///< the first look from then on reads all that can change
    };
    struct Watched
    {
        quint64 startTime = 0;
        FileHandle handle;
    };

    void takeListing(std::chrono::nanoseconds now);
    void readNew(Slot &slot, std::chrono::nanoseconds now);
    std::optional<ProcessFacts> facts(qint32 id);
    void lookAgain(Slot &slot, std::chrono::nanoseconds now);
    void takeChange(ProcessFacts &process, const ProcessState &state, const QString &executable);
    void forget(qint32 id);
    bool isYoung(const ProcessFacts &process, std::chrono::nanoseconds now) const;
    FileHandle open(const ProcessKey &process) const;

    ProcFiles m_files;
    uid_t m_user;
    bool m_real;
    std::vector<ProcessNumber> m_listing;
    std::vector<Slot> m_slots; ///< in the listing's order
    std::unordered_map<qint32, ProcessFacts> m_processes;
    std::unordered_map<qint32, Watched> m_watched;
    FileHandle m_ends; ///< an epoll that tells which watched process ended
    quint64 m_revision = 0;
    quint64 m_readings = 0;
};

/// Time since boot, sleep included: the clock that start times are counted in.
std::chrono::nanoseconds timeSinceBoot();

/// That time for a start time in clock ticks, rounded down to a tick (10 ms).
std::chrono::nanoseconds startOf(quint64 startTime);
