#pragma once

#include <chrono>
#include <functional>

/// The wall clock in whole seconds, as it is stored.
using TimeSource = std::function<std::chrono::sys_seconds()>;

/// The machine's own.
inline std::chrono::sys_seconds systemTime()
{
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}
