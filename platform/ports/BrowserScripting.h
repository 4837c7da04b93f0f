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

    /// Tells tabs of one reading apart.
    QString id() const
    {
        return appName + u'-' + QString::number(windowIndex) + u'-' + QString::number(tabIndex) + u'-' + url;
    }

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
    virtual std::optional<QString> frontTabURL(const QString &browser) = 0;

    /// Closes the tabs in the given order; one that has vanished or shows another address by now is passed
    /// over. Returns at once or after one short call, and tells no result.
    virtual void closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs) = 0;

    /// Names of browsers, beyond those that the engine supports everywhere, whose tabs can be seen at this
    /// moment.
    virtual std::vector<QString> furtherBrowsers() const = 0;
};
