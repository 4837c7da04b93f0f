#pragma once

#include <QStringList>

/// What a fresh installation blocks and allows. A change here needs a higher preset version, so that existing
/// installations receive it.
inline constexpr qint64 builtInListsVersion = 2;

QStringList builtInBlockedApps();
QStringList builtInBlockedDomains();
QStringList builtInAllowedStudyApps();
