#pragma once

#include "ControllerHarness.h"

/// The engine at work on real tabs; all else of its desktop is played.
class BlockingEngine
{
public:
    /// `running` are the applications of its desktop. Blocks from the start.
    BlockingEngine(BrowserScripting &browsers, const QStringList &running, const QStringList &blockedDomains)
    {
        for (const auto &name : running)
            m_harness.applications.start(name);
        auto config = ControllerHarness::config();
        config.blockedDomains = blockedDomains;
        m_harness.storeConfig(config);
        m_harness.controller = std::make_unique<QuorvelController>(
            ControllerPorts{m_harness.clock, m_harness.idle, m_harness.applications, browsers,
                            m_harness.preferences, m_harness.files, m_harness.backend, m_harness.urls});
        m_harness.controller->lockNow(); // its own heartbeat is the first of five
    }

    /// Lets it look at the tabs once; gives what it says of it.
    QString look()
    {
        m_harness.seconds(4);
        return m_harness.events().value(0);
    }

private:
    ControllerHarness m_harness;
};
