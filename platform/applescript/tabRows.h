#pragma once

#include "BrowserScripting.h"

#include <QString>

#include <vector>

/// The tabs in what allTabsScript() printed, in its order. A line is passed over that is not a window number,
/// a tab number and an address, parted by single tab characters; numbers are signed 64-bit and decimal.
std::vector<BrowserTab> readTabRows(const QString &output, const QString &browser);
