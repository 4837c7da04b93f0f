#pragma once

#include "Clock.h"

/// The clock of the machine.
class SystemClock : public Clock
{
public:
    /// With the zone's present offset from UTC, so that a moment that is kept stays the same when the zone
    /// changes; one in `Qt::LocalTime` would keep what the clock showed and become another moment.
    QDateTime now() const override;
    std::chrono::nanoseconds elapsed() const override;
};
