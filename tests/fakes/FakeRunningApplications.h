#pragma once

#include "RunningApplications.h"

#include <algorithm>
#include <map>
#include <set>

/// A desktop whose applications the test starts and ends. An application started as stubborn ignores
/// terminate().
class FakeRunningApplications : public RunningApplications
{
public:
    struct Request
    {
        qint32 processId;
        bool forced;

        bool operator==(const Request &) const = default;
    };

    /// Starts an application and brings it to the front; gives its process number.
    qint32 start(const QString &name, const QString &bundleIdentifier = {}, const QString &bundlePath = {})
    {
        RunningApplication application;
        application.processId = m_nextProcessId++;
        if (!name.isEmpty())
            application.localizedName = name;
        if (!bundleIdentifier.isEmpty())
            application.bundleIdentifier = bundleIdentifier;
        if (!bundlePath.isEmpty())
            application.bundlePath = bundlePath;
        m_applications.push_back(application);
        m_frontmost = application.processId;
        return application.processId;
    }
    qint32 startStubborn(const QString &name)
    {
        const auto processId = start(name);
        m_stubborn.insert(processId);
        return processId;
    }
    /// Survives even a forced quit.
    qint32 startImmortal(const QString &name)
    {
        const auto processId = startStubborn(name);
        m_immortal.insert(processId);
        return processId;
    }
    void add(const RunningApplication &application) { m_applications.push_back(application); }
    void end(qint32 processId)
    {
        std::erase_if(m_applications, [&](const auto &each) { return each.processId == processId; });
    }
    void bringToFront(qint32 processId) { m_frontmost = processId; }
    void leaveFrontEmpty() { m_frontmost.reset(); }

    std::vector<Request> requests; ///< every quit request, oldest first

    Availability availability() const override { return Availability::working(); }
    std::optional<RunningApplication> frontmost() override
    {
        const auto found = std::find_if(m_applications.begin(), m_applications.end(),
                                        [&](const auto &each) { return m_frontmost == each.processId; });
        return found == m_applications.end() ? std::nullopt : std::optional(*found);
    }
    std::vector<RunningApplication> running() override { return m_applications; }
    void terminate(const RunningApplication &application) override
    {
        requests.push_back({application.processId, false});
        if (!m_stubborn.contains(application.processId))
            end(application.processId);
    }
    void forceTerminate(const RunningApplication &application) override
    {
        requests.push_back({application.processId, true});
        if (!m_immortal.contains(application.processId))
            end(application.processId);
    }

private:
    std::vector<RunningApplication> m_applications;
    std::set<qint32> m_stubborn;
    std::set<qint32> m_immortal;
    std::optional<qint32> m_frontmost;
    qint32 m_nextProcessId = 1'000'001; // beyond what Linux gives by default, so no real process is meant
};
