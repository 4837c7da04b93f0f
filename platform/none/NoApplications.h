#pragma once

#include "RunningApplications.h"

/// Where applications cannot be seen: none is frontmost, none runs, none can be ended.
class NoApplications : public RunningApplications
{
public:
    Availability availability() const override
    {
        return Availability::missing(
            QStringLiteral("On this desktop Quorvel cannot see or close applications yet."),
            QStringLiteral("В этой системе Quorvel пока не видит приложения и не может их закрывать."));
    }
    std::optional<RunningApplication> frontmost() override { return std::nullopt; }
    std::vector<RunningApplication> running() override { return {}; }
    void terminate(const RunningApplication &) override {}
    void forceTerminate(const RunningApplication &) override {}
};
