#pragma once

#include "BrowserScripting.h"

/// Reads and closes the tabs of the browsers whose tabs can be read.
class BrowserInspector
{
public:
    explicit BrowserInspector(BrowserScripting &scripting);

    std::vector<BrowserTab> allTabs(const QString &browser) const;

    /// Address of the front tab, trimmed; none where it is empty, cannot be read, or is not a URL.
    std::optional<QString> frontTabURL(const QString &browser) const;

    /// Closes those of `tabs` that belong to `browser`, last window and last tab first, so that no close
    /// shifts the number of a tab still to be closed.
    void closeTabs(std::vector<BrowserTab> tabs, const QString &browser) const;

private:
    BrowserScripting &m_scripting;
};
