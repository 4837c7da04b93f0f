#pragma once

#include "BrowserScripting.h"

#include <map>

/// Browsers whose tabs the test lays out; closing takes the tab away and is recorded.
class FakeBrowserScripting : public BrowserScripting
{
public:
    std::map<QString, std::vector<BrowserTab>> tabs;
    std::map<QString, QString> frontUrls;
    std::vector<QString> further;        ///< what furtherBrowsers() tells
    std::vector<BrowserTab> closed;      ///< in the order of closing
    std::vector<QString> listedBrowsers; ///< one entry for each call of allTabs()

    Availability availability() const override { return Availability::working(); }
    std::vector<BrowserTab> allTabs(const QString &browser) override
    {
        listedBrowsers.push_back(browser);
        return tabs[browser];
    }
    std::optional<QString> frontTabURL(const QString &browser) override
    {
        const auto found = frontUrls.find(browser);
        return found == frontUrls.end() ? std::nullopt : std::optional(found->second);
    }
    void closeTabs(const QString &browser, const std::vector<BrowserTab> &toClose) override
    {
        for (const auto &tab : toClose) {
            closed.push_back(tab);
            std::erase(tabs[browser], tab);
        }
    }
    std::vector<QString> furtherBrowsers() const override { return further; }
};
