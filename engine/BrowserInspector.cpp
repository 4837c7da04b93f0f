#include "BrowserInspector.h"

#include "browserAddress.h"

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

BrowserInspector::BrowserInspector(BrowserScripting &scripting)
    : m_scripting(scripting)
{}

std::vector<BrowserTab> BrowserInspector::allTabs(const QString &browser) const
{
    return m_scripting.allTabs(browser);
}

std::optional<QString> BrowserInspector::frontTabURL(const QString &browser) const
{
    const auto url = m_scripting.frontTabURL(browser).value_or(QString()).trimmed();
    if (!isBrowserAddress(url))
        return std::nullopt;
    return url;
}

void BrowserInspector::closeTabs(std::vector<BrowserTab> tabs, const QString &browser) const
{
    std::erase_if(tabs, [&](const BrowserTab &tab) { return tab.appName != browser; });
    std::stable_sort(tabs.begin(), tabs.end(), [](const BrowserTab &left, const BrowserTab &right) {
        return std::tie(left.windowIndex, left.tabIndex) > std::tie(right.windowIndex, right.tabIndex);
    });
    if (!tabs.empty())
        m_scripting.closeTabs(browser, tabs);
}
