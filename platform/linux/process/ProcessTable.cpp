#include "ProcessTable.h"

#include "processLog.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto youngFor = 10s;
constexpr auto lookEvery = 10s;
constexpr auto readEvery = 30s;
constexpr size_t mostWatched = 256; // of the 1024 open files that a program may have by default
constexpr int endsAtOnce = 64;

int openProcess(qint32 id)
{
    return int(syscall(SYS_pidfd_open, id, 0));
}

int signalProcess(int handle, int number)
{
    return int(syscall(SYS_pidfd_send_signal, handle, number, nullptr, 0));
}

bool sameProgram(const ProcessState &one, const ProcessState &other)
{
    return one.startTime == other.startTime && one.command == other.command;
}

/// The next second after `now` at which it is the process's turn: the turns of all are spread over the
/// period, so that no single second pays for all.
std::chrono::nanoseconds turnAfter(std::chrono::nanoseconds now, qint32 id, std::chrono::seconds period)
{
    const auto second = std::chrono::floor<std::chrono::seconds>(now);
    const auto past = (second - std::chrono::seconds(id % period.count())) % period;
    return second + period - past;
}

} // namespace

std::chrono::nanoseconds timeSinceBoot()
{
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::chrono::nanoseconds startOf(quint64 startTime)
{
    static const auto tick = std::chrono::nanoseconds(1s) / qMax(sysconf(_SC_CLK_TCK), 1L);
    return tick * qint64(startTime);
}

ProcessTable::ProcessTable(const QString &root, uid_t user)
    : m_files(root)
    , m_user(user)
    , m_real(root == "/proc"_L1)
    , m_ends(m_real ? epoll_create1(EPOLL_CLOEXEC) : -1)
{}

void ProcessTable::refresh(std::chrono::nanoseconds now)
{
    noticeEnds();
    takeListing(now);
    for (auto &slot : m_slots) {
        if (now >= slot.nextLook)
            lookAgain(slot, now);
    }
}

void ProcessTable::noticeEnds()
{
    if (m_watched.empty())
        return;
    epoll_event ends[endsAtOnce];
    const int count = epoll_wait(m_ends.descriptor(), ends, endsAtOnce, 0);
    for (int at = 0; at < count; ++at) {
        const auto id = qint32(ends[at].data.u32);
        m_watched.erase(id); // closing the handle takes it out of the epoll too
        forget(id);
    }
}

const ProcessFacts *ProcessTable::process(qint32 id) const
{
    const auto found = m_processes.find(id);
    return found == m_processes.end() ? nullptr : &found->second;
}

void ProcessTable::watch(const std::vector<ProcessKey> &processes)
{
    if (!m_real)
        return;
    std::unordered_map<qint32, Watched> watched;
    for (const auto &key : processes) {
        if (watched.size() >= mostWatched)
            break;
        const auto held = m_watched.find(key.id);
        if (held != m_watched.end() && held->second.startTime == key.startTime) {
            watched.emplace(key.id, std::move(held->second));
            continue;
        }
        auto handle = open(key);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u32 = quint32(key.id);
        if (handle && epoll_ctl(m_ends.descriptor(), EPOLL_CTL_ADD, handle.descriptor(), &event) == 0)
            watched.emplace(key.id, Watched{key.startTime, std::move(handle)});
    }
    m_watched = std::move(watched);
}

bool ProcessTable::signal(const ProcessKey &process, int number)
{
    if (!m_real || process.id <= 1 || process.id == getpid())
        return false;
    const auto held = m_watched.find(process.id);
    const bool watched = held != m_watched.end() && held->second.startTime == process.startTime;
    const auto opened = watched ? FileHandle() : open(process);
    const int handle = watched ? held->second.handle.descriptor() : opened.descriptor();
    if (handle < 0) {
        qCInfo(logProcess) << "process" << process.id << "is gone or cannot be held: no signal" << number;
        return false;
    }
    if (signalProcess(handle, number) == 0)
        return true;
    if (errno != ESRCH)
        qCWarning(logProcess) << "signal" << number << "to process" << process.id
                              << "failed:" << strerror(errno);
    return false;
}

void ProcessTable::takeListing(std::chrono::nanoseconds now)
{
    std::vector<ProcessNumber> listing;
    listing.reserve(m_listing.size() + 16);
    m_files.list(listing);
    if (listing == m_listing)
        return;
    std::vector<Slot> slots;
    slots.reserve(listing.size());
    auto old = m_slots.begin();
    for (const auto &number : listing) {
        for (; old != m_slots.end() && old->number.id < number.id; ++old)
            forget(old->number.id);
        const bool listed = old != m_slots.end() && old->number.id == number.id;
        if (listed && old->number == number) {
            slots.push_back(*old++);
            continue;
        }
        if (listed) { // the number has passed to another process
            forget(number.id);
            ++old;
        }
        slots.push_back({number, now, now});
        readNew(slots.back(), now);
    }
    for (; old != m_slots.end(); ++old)
        forget(old->number.id);
    m_slots = std::move(slots);
    m_listing = std::move(listing);
}

void ProcessTable::readNew(Slot &slot, std::chrono::nanoseconds now)
{
    const auto id = slot.number.id;
    slot.nextLook = now; // where nothing can be learnt at this moment
    const auto owner = m_files.owner(id);
    if (!owner)
        return;
    if (owner != m_user) {
        // Sessions begin as root's processes and change hands in their first moments.
        slot.nextLook = now - slot.seen < youngFor ? now + 1s : turnAfter(now, id, readEvery);
        return;
    }
    auto read = facts(id);
    if (!read)
        return;
    slot.nextLook = turnAfter(now, id, lookEvery);
    slot.nextReading = turnAfter(now, id, readEvery);
    if (read->state.ended() || read->state.kernelThread)
        return;
    if (isYoung(*read, now))
        slot.nextLook = slot.nextReading = now;
    m_processes.insert_or_assign(id, std::move(*read));
    ++m_revision;
}

void ProcessTable::lookAgain(Slot &slot, std::chrono::nanoseconds now)
{
    const auto id = slot.number.id;
    const auto known = m_processes.find(id);
    if (known == m_processes.end()) {
        readNew(slot, now);
        return;
    }
    const bool young = isYoung(known->second, now);
    slot.nextLook = young ? now : turnAfter(now, id, lookEvery);
    const auto executable = m_files.executable(id);
    // One that has ended but is not yet waited for has none, one that changed hands shows none.
    if (now < slot.nextReading && !executable.isEmpty() && executable == known->second.executable)
        return;
    slot.nextReading = young ? now : turnAfter(now, id, readEvery);
    const auto state = m_files.state(id);
    // An old process that changes hands also changes the owner of its files: no need for the closer look.
    const bool same = !young && m_files.ownerOfFiles(id) == m_user;
    const auto owner = same ? m_user : m_files.owner(id).value_or(m_user);
    // What cannot be read has not ended: the listing tells of an end.
    if (owner != m_user || (state && state->ended()))
        forget(id);
    else if (state)
        takeChange(known->second, *state, executable);
}

void ProcessTable::takeChange(ProcessFacts &process, const ProcessState &state, const QString &executable)
{
    const bool other =
        !sameProgram(process.state, state) || (!executable.isEmpty() && executable != process.executable);
    if (other) {
        if (auto fresh = facts(process.id))
            process = std::move(*fresh);
        ++m_revision;
    } else if (process.state.parent != state.parent || process.state.terminal != state.terminal) {
        process.state = state;
        ++m_revision;
    }
}

std::optional<ProcessFacts> ProcessTable::facts(qint32 id)
{
    auto read = m_files.facts(id);
    if (read)
        read->reading = ++m_readings;
    return read;
}

void ProcessTable::forget(qint32 id)
{
    if (m_processes.erase(id) > 0)
        ++m_revision;
}

bool ProcessTable::isYoung(const ProcessFacts &process, std::chrono::nanoseconds now) const
{
    return now - startOf(process.state.startTime) < youngFor;
}

FileHandle ProcessTable::open(const ProcessKey &process) const
{
    FileHandle handle(openProcess(process.id));
    // Opened first and checked second: were the number passed on in between, the check would see the
    // newcomer.
    const auto state = handle ? m_files.state(process.id) : std::nullopt;
    if (!state || state->startTime != process.startTime)
        return {};
    return handle;
}
