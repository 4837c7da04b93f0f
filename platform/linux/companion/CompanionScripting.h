#pragma once

#include "BrowserScripting.h"

#include <QHash>

class CompanionServer;

/// The tabs that the companions have told of. Every answer comes from memory.
///
/// A browser's windows are those of all its connections (one for each profile), in the order of connecting
/// and then in the browser's own, numbered through. A tab without an address is not listed, but counts.
class CompanionScripting : public BrowserScripting
{
public:
    /// `server` outlives this.
    explicit CompanionScripting(CompanionServer &server);

    Availability availability() const override;
    std::vector<BrowserTab> allTabs(const QString &browser) override;
    std::optional<QString> frontTabURL(const QString &browser) override;
    void closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs) override;
    std::vector<QString> furtherBrowsers() const override;

private:
    struct KeptList
    {
        quint64 revision = 0;
        std::vector<BrowserTab> tabs;
    };
    const std::vector<BrowserTab> &listOf(const QString &browser);

    CompanionServer &m_server;
    QHash<QString, KeptList> m_lists; ///< so that a call is a copy
};
