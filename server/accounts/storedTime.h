#pragma once

#include <chrono>
#include <cstdint>

/// Unix seconds, as times are stored.
inline long long storedTime(std::chrono::sys_seconds time)
{
    return time.time_since_epoch().count();
}
