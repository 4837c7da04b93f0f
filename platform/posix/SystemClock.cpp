#include "SystemClock.h"

#include <ctime>

QDateTime SystemClock::now() const
{
    // Only here, by its own promise, does the C library look at /etc/localtime again. Qt 6.4 happens to ask
    // it in a way that does so too.
    ::tzset();
    const QDateTime local = QDateTime::currentDateTime();
    return local.toOffsetFromUtc(local.offsetFromUtc());
}

std::chrono::nanoseconds SystemClock::elapsed() const
{
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}
