#include "CompanionScripting.h"

#include "CompanionServer.h"
#include "browserNames.h"

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

namespace {

/// A window and the connection that told of it.
struct NumberedWindow
{
    quint64 connection = 0;
    const CompanionWindow *window = nullptr;
};

/// All windows of a browser; the place plus 1 is the number.
std::vector<NumberedWindow> windowsOf(const CompanionServer &server, const QString &browser)
{
    std::vector<NumberedWindow> windows;
    for (const auto &source : server.sources(browser)) {
        for (const auto &window : source.ledger->windows())
            windows.push_back({source.number, &window});
    }
    return windows;
}

std::vector<BrowserTab> tabsOf(const CompanionServer &server, const QString &browser)
{
    std::vector<BrowserTab> tabs;
    qint64 windowIndex = 0;
    for (const auto &numbered : windowsOf(server, browser)) {
        ++windowIndex;
        qint64 tabIndex = 0;
        for (const auto &tab : numbered.window->tabs) {
            ++tabIndex;
            if (!tab.url.isEmpty())
                tabs.push_back({browser, windowIndex, tabIndex, tab.url});
        }
    }
    return tabs;
}

/// The element with a number that counts from 1; null where there is none.
template <typename Element>
const Element *numbered(const std::vector<Element> &elements, qint64 number)
{
    return number >= 1 && number <= qint64(elements.size()) ? &elements[std::size_t(number - 1)] : nullptr;
}

} // namespace

CompanionScripting::CompanionScripting(CompanionServer &server)
    : m_server(server)
{}

Availability CompanionScripting::availability() const
{
    if (m_server.listening())
        return Availability::working();
    return Availability::missing(
        u"Browser tabs are not seen, because Quorvel cannot open the socket for its companion."_s,
        u"Вкладки браузера не видны: Quorvel не может открыть сокет для своего компаньона."_s);
}

std::vector<BrowserTab> CompanionScripting::allTabs(const QString &browser)
{
    return listOf(browser);
}

std::optional<QString> CompanionScripting::frontTabURL(const QString &browser)
{
    // Profiles tell separately that they lost the keyboard, so the one that got it last is right.
    const CompanionServer::Source *latest = nullptr;
    const auto sources = m_server.sources(browser);
    for (const auto &source : sources) {
        if (source.ledger->focused() && (!latest || source.focusClaim > latest->focusClaim))
            latest = &source;
    }
    const auto *tab = latest ? latest->ledger->frontTab() : nullptr;
    return tab && !tab->url.isEmpty() ? std::optional(tab->url) : std::nullopt;
}

void CompanionScripting::closeTabs(const QString &browser, const std::vector<BrowserTab> &tabs)
{
    const auto windows = windowsOf(m_server, browser);
    std::map<quint64, std::vector<CompanionTab>> orders; // by connection
    for (const auto &tab : tabs) {
        const auto *place = tab.appName == browser ? numbered(windows, tab.windowIndex) : nullptr;
        const auto *known = place ? numbered(place->window->tabs, tab.tabIndex) : nullptr;
        if (known && !known->url.isEmpty() && known->url == tab.url)
            orders[place->connection].push_back(*known);
    }
    for (const auto &[connection, order] : orders)
        m_server.close(connection, order);
}

std::vector<QString> CompanionScripting::furtherBrowsers() const
{
    const auto connected = m_server.browsers();
    std::vector<QString> further;
    std::copy_if(connected.begin(), connected.end(), std::back_inserter(further),
                 [](const QString &name) { return !isSupportedBrowserName(name); });
    return further;
}

const std::vector<BrowserTab> &CompanionScripting::listOf(const QString &browser)
{
    static const std::vector<BrowserTab> none;
    const auto revision = m_server.revision(browser);
    if (revision == 0) // never heard of
        return none;
    auto &kept = m_lists[browser];
    if (kept.revision != revision)
        kept = {revision, tabsOf(m_server, browser)};
    return kept.tabs;
}
