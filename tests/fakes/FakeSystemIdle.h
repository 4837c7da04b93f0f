#pragma once

#include "SystemIdle.h"

/// An idle time that the test sets; none means unknown.
class FakeSystemIdle : public SystemIdle
{
public:
    std::optional<std::chrono::nanoseconds> since = std::chrono::nanoseconds::zero();

    Availability availability() const override { return Availability::working(); }
    std::optional<std::chrono::nanoseconds> sinceLastInput() const override { return since; }
};
