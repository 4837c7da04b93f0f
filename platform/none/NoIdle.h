#pragma once

#include "SystemIdle.h"

/// Where the idle time is not known.
class NoIdle : public SystemIdle
{
public:
    Availability availability() const override
    {
        return Availability::missing(
            QStringLiteral("On this desktop Quorvel cannot tell yet how long you have been away."),
            QStringLiteral("В этой системе Quorvel пока не знает, сколько времени ты бездействуешь."));
    }
    std::optional<std::chrono::nanoseconds> sinceLastInput() const override { return std::nullopt; }
};
