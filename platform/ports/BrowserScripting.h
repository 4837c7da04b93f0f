#pragma once

#include "Availability.h"

#include <QString>

#include <optional>
#include <vector>

/// One open browser tab. Window and tab numbers count from 1, as they stood when the tab was read.
struct BrowserTab
{
    QString appName; ///< the browser, by the name its application shows
    qint64 windowIndex = 0;
    qint64 tabIndex = 0;
    QString url; ///< the address as the browser wrote it, letter for letter

    bool operator==(const BrowserTab &) const = default;
};

/// The tabs of running browsers. Answers come from memory or from one short call; the heartbeat waits for
/// them.
class BrowserScripting
{
public:
    virtual ~BrowserScripting() = default;

    virtual Availability availability() const = 0;

    /// Every open tab, window by window; empty where the browser cannot be asked.
    virtual std::vector<BrowserTab> allTabs(const QString &browser) = 0;

    /// Address of the front window's active tab; no value where there is none or it cannot be read.
    virtual std::optional<QString> frontTabUrl(const QString &browser) = 0;

    /// Closes the tabs in the given order; one that has vanished is passed over.
    virtual void closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs) = 0;
};
