#pragma once

#include "TimeSource.h"

#include <chrono>

/// A clock that only tests move.
class TestClock
{
public:
    TimeSource source()
    {
        return [this] { return m_now; };
    }
    void advance(std::chrono::seconds length) { m_now += length; }
    std::chrono::sys_seconds now() const { return m_now; }

private:
    std::chrono::sys_seconds m_now{std::chrono::seconds(1'800'000'000)}; // a full hour, and a full minute
};
