#pragma once

#include "RunningApplications.h"

#include <QString>

#include <vector>

/// Whether the tabs of one running browser are seen, and what its user can do about it.
struct BrowserCoverage
{
    enum class State {
        Connected,  ///< tabs are seen and closed
        Missing,    ///< the browser could be seen, but what is needed in it is not there
        CannotWork, ///< this kind of browser cannot be reached
    };

    QString browser; ///< by the name its application shows
    State state = State::Missing;
    QString adviceEnglish; ///< one sentence on what there is and what to do
    QString adviceRussian; ///< the same sentence in Russian

    bool operator==(const BrowserCoverage &) const = default;
};

/// Knows which browsers are seen.
class BrowserCoverageSource
{
public:
    virtual ~BrowserCoverageSource() = default;

    /// One entry for each browser among the running applications, by name, sorted.
    virtual std::vector<BrowserCoverage> coverage(const std::vector<RunningApplication> &running) = 0;
};
