// Preloaded into a program, this lets its main thread wait in a fraction of the time: hours of an idle
// program pass in minutes, and all clocks that it asks agree. Only waiting is hastened. Work takes as long as
// it takes, so that a busy machine makes no timer late that would be in time otherwise, as a clock that runs
// faster throughout would. Other threads wait as long as ever.
//
// QUORVEL_FAST_WAITS_SPEED says how many times faster; QUORVEL_FAST_WAITS_FILE is a file of eight bytes which
// holds by how many nanoseconds the program's clocks are ahead, for whoever wants to know.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr int64_t second = 1'000'000'000;
constexpr int64_t millisecond = 1'000'000;
/// No machine has run this long, and no calendar is this early.
constexpr time_t largestMonotonic = 500'000'000;

using Ahead = std::atomic<int64_t>;

struct State
{
    Ahead *ahead = nullptr;
    int64_t speed = 1;

    State()
    {
        const char *path = getenv("QUORVEL_FAST_WAITS_FILE");
        const char *times = getenv("QUORVEL_FAST_WAITS_SPEED");
        const int file = path && times ? open(path, O_RDWR | O_CLOEXEC) : -1;
        void *memory = mmap(nullptr, sizeof(Ahead), PROT_READ | PROT_WRITE,
                            file < 0 ? MAP_PRIVATE | MAP_ANONYMOUS : MAP_SHARED, file, 0);
        if (file >= 0)
            close(file);
        if (memory == MAP_FAILED)
            abort();
        ahead = static_cast<Ahead *>(memory);
        if (file >= 0)
            speed = std::max(atoi(times), 1);
        // What the program starts lives at the usual pace.
        unsetenv("LD_PRELOAD");
    }
};

State &state()
{
    static State only;
    return only;
}

int64_t inNanoseconds(const timespec &time)
{
    return time.tv_sec * second + time.tv_nsec;
}

timespec inSeconds(int64_t nanoseconds)
{
    return {time_t(nanoseconds / second), long(nanoseconds % second)};
}

int64_t realNow(clockid_t clock)
{
    timespec time = {};
    syscall(SYS_clock_gettime, clock, &time);
    return inNanoseconds(time);
}

bool tellsTimeOfLife(clockid_t clock)
{
    return clock != CLOCK_PROCESS_CPUTIME_ID && clock != CLOCK_THREAD_CPUTIME_ID && clock >= 0;
}

int64_t ownNow(clockid_t clock)
{
    return realNow(clock) + (tellsTimeOfLife(clock) ? state().ahead->load() : 0);
}

bool isMainThread()
{
    return syscall(SYS_gettid) == getpid();
}

int realPoll(pollfd *files, nfds_t count, const timespec *time, const sigset_t *mask)
{
    auto left = time ? *time : timespec();
    // The kernel has 64 signals.
    const auto result = syscall(SYS_ppoll, files, count, time ? &left : nullptr, mask, sizeof(uint64_t));
    return int(result); // errno is set
}

int hastenedPoll(pollfd *files, nfds_t count, const timespec *wanted, const sigset_t *mask)
{
    const auto speed = state().speed;
    // A wait for one file alone is for an answer of another program, which is not hastened.
    if (!wanted || speed == 1 || count < 2 || !isMainThread())
        return realPoll(files, count, wanted, mask);
    const auto most = inNanoseconds(*wanted);
    const auto time = inSeconds(most / speed);
    const auto began = realNow(CLOCK_MONOTONIC);
    const int result = realPoll(files, count, &time, mask);
    const int error = errno;
    const auto waited = realNow(CLOCK_MONOTONIC) - began;
    const auto passed = result == 0 ? most : std::min(waited * speed, most);
    state().ahead->fetch_add(std::max<int64_t>(passed - waited, 0));
    errno = error;
    return result;
}

/// The moment of the system's clock at which the program's own will be there.
timespec realDeadline(clockid_t clock, const timespec &own)
{
    return inSeconds(std::max<int64_t>(inNanoseconds(own) - state().ahead->load(), realNow(clock)));
}

template <typename Function>
Function original(const char *name, const char *version)
{
    return reinterpret_cast<Function>(dlvsym(RTLD_NEXT, name, version));
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    timespec real = {};
    if (syscall(SYS_clock_gettime, clock, &real) != 0)
        return -1;
    *time = tellsTimeOfLife(clock) ? inSeconds(inNanoseconds(real) + state().ahead->load()) : real;
    return 0;
}

int gettimeofday(timeval *time, void *) noexcept
{
    const auto now = ownNow(CLOCK_REALTIME);
    *time = {time_t(now / second), suseconds_t(now % second / 1000)};
    return 0;
}

time_t time(time_t *place) noexcept
{
    const auto now = time_t(ownNow(CLOCK_REALTIME) / second);
    if (place)
        *place = now;
    return now;
}

int ppoll(pollfd *files, nfds_t count, const timespec *wanted, const sigset_t *mask)
{
    return hastenedPoll(files, count, wanted, mask);
}

int poll(pollfd *files, nfds_t count, int milliseconds)
{
    const auto time = inSeconds(milliseconds * millisecond);
    return hastenedPoll(files, count, milliseconds < 0 ? nullptr : &time, nullptr);
}

// What a program calls that was compiled with checks of sizes.
int __poll_chk(pollfd *files, nfds_t count, int milliseconds, size_t)
{
    return poll(files, count, milliseconds);
}

int __ppoll_chk(pollfd *files, nfds_t count, const timespec *wanted, const sigset_t *mask, size_t)
{
    return ppoll(files, count, wanted, mask);
}

int pthread_cond_timedwait(pthread_cond_t *condition, pthread_mutex_t *mutex, const timespec *deadline)
{
    using Function = int (*)(pthread_cond_t *, pthread_mutex_t *, const timespec *);
    static const auto real = original<Function>("pthread_cond_timedwait", "GLIBC_2.3.2");
    const auto clock = deadline->tv_sec < largestMonotonic ? CLOCK_MONOTONIC : CLOCK_REALTIME;
    const auto moment = realDeadline(clock, *deadline);
    return real(condition, mutex, &moment);
}

int pthread_cond_clockwait(pthread_cond_t *condition, pthread_mutex_t *mutex, clockid_t clock,
                           const timespec *deadline)
{
    using Function = int (*)(pthread_cond_t *, pthread_mutex_t *, clockid_t, const timespec *);
    static const auto real = original<Function>("pthread_cond_clockwait", "GLIBC_2.30");
    const auto moment = realDeadline(clock, *deadline);
    return real(condition, mutex, clock, &moment);
}
}
