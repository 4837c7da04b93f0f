#pragma once

#include "BrowserScripting.h"

/// Where no browser can be asked for its tabs.
class NoBrowserScripting : public BrowserScripting
{
public:
    Availability availability() const override
    {
        return Availability::missing(QStringLiteral("Browser tabs are not inspected yet."),
                                     QStringLiteral("Вкладки браузера пока не проверяются."));
    }
    std::vector<BrowserTab> allTabs(const QString &) override { return {}; }
    std::optional<QString> frontTabUrl(const QString &) override { return std::nullopt; }
    void closeTabs(const QString &, const std::vector<BrowserTab> &) override {}
};
