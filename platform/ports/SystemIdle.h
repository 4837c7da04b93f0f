#pragma once

#include "Availability.h"

#include <QtGlobal>

#include <chrono>
#include <optional>

/// How long nobody has touched keyboard or pointer.
class SystemIdle
{
public:
    virtual ~SystemIdle() = default;

    virtual Availability availability() const = 0;

    /// Time since the last user input, 0 or more; no value where it is not known.
    virtual std::optional<std::chrono::nanoseconds> sinceLastInput() const = 0;

    /// Whole seconds since the last user input, rounded down. An unknown time reads 0, that is, not idle:
    /// a system that cannot tell never pauses a session for idleness.
    qint64 seconds() const
    {
        const auto since = sinceLastInput().value_or(std::chrono::nanoseconds::zero());
        return std::chrono::duration_cast<std::chrono::seconds>(since).count();
    }
};
