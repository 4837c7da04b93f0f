#include "SystemClock.h"

#include <ctime>

QDateTime SystemClock::now() const
{
    // The C library looks again at /etc/localtime here only; all else goes by the zone it read first.
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
