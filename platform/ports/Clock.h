#pragma once

#include <QDateTime>

#include <chrono>

/// Time as the user's clock and as a stopwatch tell it.
class Clock
{
public:
    virtual ~Clock() = default;

    /// This moment in the system's current time zone; follows a change of clock or zone at once.
    virtual QDateTime now() const = 0;

    /// A stopwatch that no clock change moves, from an arbitrary start; it stands still while the machine
    /// sleeps.
    virtual std::chrono::nanoseconds elapsed() const = 0;
};
