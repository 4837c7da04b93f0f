#pragma once

#include "BrowserScripting.h"

#include <QString>

#include <vector>

/// The scripts that browsers are asked with. The browser's name stands in them as it is; lines are parted by
/// line feeds, and the last has none.

/// Prints a row for each tab with an address: window number, tab number and address, parted by tab
/// characters.
QString allTabsScript(const QString &browser);

/// Prints the front tab's address; an empty text where no window is open.
QString frontTabScript(const QString &browser);

/// Closes the tabs by their numbers in the given order; one that cannot be closed does not stop the others.
QString closeTabsScript(const std::vector<BrowserTab> &tabs, const QString &browser);
