// Closing tabs on blocked sites.
#include "BrowserInspector.h"
#include "QuorvelController.h"
#include "RunningApplications.h"
#include "domains.h"
#include "textLists.h"

using namespace Qt::StringLiterals;

namespace {

/// Heartbeats from one look at the tabs to the next.
constexpr int heartbeatsBetweenChecks = 5;

/// Hosts that the event names at most.
constexpr qsizetype hostsNamed = 4;

} // namespace

void QuorvelController::checkBrowsersIfNeeded()
{
    if (++m_browserTick < heartbeatsBetweenChecks)
        return;
    m_browserTick = 0;
    closeBlockedTabs();
}

void QuorvelController::closeBlockedTabs()
{
    QSet<QString> browsers;
    for (const auto &application : m_ports.applications.running())
        browsers.insert(displayName(application));
    browsers.intersect(BrowserInspector::supportedBrowsers());

    const BrowserInspector inspector(m_ports.browsers);
    QStringList closedHosts;
    for (const auto &browser : std::as_const(browsers)) {
        std::vector<BrowserTab> blocked;
        for (const auto &tab : inspector.allTabs(browser)) {
            const auto host = hostOfUrl(tab.url);
            if (!host || !belongsToAnyDomain(normalizeDomain(*host), config().blockedDomains))
                continue;
            blocked.push_back(tab);
            closedHosts.append(normalizeDomain(*host));
        }
        inspector.closeTabs(std::move(blocked), browser);
    }
    if (closedHosts.isEmpty())
        return;
    addEvent(u"Closed "_s + QString::number(closedHosts.size()) + u" blocked browser tab"_s +
             (closedHosts.size() == 1 ? QString() : u"s"_s) + u": "_s +
             removingDuplicates(closedHosts).mid(0, hostsNamed).join(u", "_s) + u"."_s);
}
