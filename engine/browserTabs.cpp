// Closing tabs on blocked sites.
#include "BrowserInspector.h"
#include "QuorvelController.h"
#include "RunningApplications.h"
#include "domains.h"
#include "supportedBrowsers.h"
#include "textLists.h"

using namespace Qt::StringLiterals;

namespace {

/// Heartbeats from one look at the tabs to the next.
constexpr int heartbeatsBetweenChecks = 5;

/// Hosts that the event names at most.
constexpr qsizetype hostsNamed = 4;

/// One look at the tabs: those on blocked domains are closed, and their hosts remembered.
class TabSweep
{
public:
    TabSweep(const BrowserInspector &inspector, const QStringList &blockedDomains)
        : m_inspector(inspector)
        , m_blocked(blockedDomains)
    {}

    void visit(const QString &browser)
    {
        std::vector<BrowserTab> toClose;
        for (auto &tab : m_inspector.allTabs(browser)) {
            const auto host = hostOfUrl(tab.url);
            const auto domain = normalizeDomain(host.value_or(QString()));
            if (!host || !m_blocked.contains(domain))
                continue;
            m_closedHosts.append(domain);
            toClose.push_back(std::move(tab));
        }
        m_inspector.closeTabs(std::move(toClose), browser);
    }

    /// What is to be logged; empty where nothing was closed.
    QString event() const
    {
        if (m_closedHosts.isEmpty())
            return {};
        return u"Closed "_s + QString::number(m_closedHosts.size()) + u" blocked browser tab"_s +
               (m_closedHosts.size() == 1 ? QString() : u"s"_s) + u": "_s +
               removingDuplicates(m_closedHosts).mid(0, hostsNamed).join(u", "_s) + u"."_s;
    }

private:
    const BrowserInspector &m_inspector;
    DomainSet m_blocked;
    QStringList m_closedHosts; ///< in their normalized form, one for each closed tab
};

} // namespace

void QuorvelController::checkBrowsersIfNeeded()
{
    if (++m_browserTick < heartbeatsBetweenChecks)
        return;
    m_browserTick = 0;

    QSet<QString> browsers;
    for (const auto &application : m_ports.applications.running())
        browsers.insert(displayName(application));
    browsers.intersect(supportedBrowsers());
    closeBlockedTabs(browsers);
}

void QuorvelController::checkFurtherBrowsersIfNeeded()
{
    // Only in the heartbeat in which the supported ones were looked at.
    if (m_browserTick != 0)
        return;
    const auto further = m_ports.browsers.furtherBrowsers();
    closeBlockedTabs(QSet<QString>(further.begin(), further.end()));
}

void QuorvelController::closeBlockedTabs(const QSet<QString> &browsers)
{
    const BrowserInspector inspector(m_ports.browsers);
    TabSweep sweep(inspector, config().blockedDomains);
    for (const auto &browser : browsers)
        sweep.visit(browser);
    if (const auto event = sweep.event(); !event.isEmpty())
        addEvent(event);
}
