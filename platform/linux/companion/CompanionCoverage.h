#pragma once

#include "BrowserCoverage.h"

#include <QSet>

#include <functional>

class CompanionServer;

/// Which running browsers have a companion that tells their tabs, and what to do where one has none.
class CompanionCoverage : public BrowserCoverageSource
{
public:
    /// Where a user finds the companion.
    struct Places
    {
        QString folder; ///< the unpacked extension, for browsers of the Chromium family
        QString addOn;  ///< the file of it that Firefox is shown
    };

    /// `server` outlives this. `browserMissed` is called when a browser has been found running that has no
    /// companion yet, once until it has ended or got one.
    CompanionCoverage(const CompanionServer &server, const Places &places,
                      std::function<void()> browserMissed = {});

    std::vector<BrowserCoverage> coverage(const std::vector<RunningApplication> &running) override;

private:
    void noteMissing(const std::vector<BrowserCoverage> &entries);
    BrowserCoverage coverageOf(const QString &browser, bool sandboxed) const;
    BrowserCoverage connected(const QString &browser) const;
    BrowserCoverage missing(const QString &browser) const;
    BrowserCoverage outdated(const QString &browser) const;

    const CompanionServer &m_server;
    Places m_places;
    std::function<void()> m_browserMissed;
    QSet<QString> m_missing; ///< at the last look
};
