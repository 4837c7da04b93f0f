#pragma once

#include "Clock.h"

/// The clock of the machine.
class SystemClock : public Clock
{
public:
    QDateTime now() const override;
    std::chrono::nanoseconds elapsed() const override;
};
