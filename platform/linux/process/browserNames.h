#pragma once

#include <QString>

#include <optional>

/// The name under which a browser's tabs can be asked for ("Google Chrome", "Chromium"), whatever its desktop
/// entry calls it in whichever language. No value for other programs and for beta, developer and nightly
/// editions, which keep their own names. Either argument may be empty.
std::optional<QString> supportedBrowserName(const QString &desktopId, const QString &executable);

/// Whether this is one of the seven names that supportedBrowserName() may give.
bool isSupportedBrowserName(const QString &name);

/// The name of a browser beyond those whose tabs can be seen all the same ("Firefox"), under the same rules.
std::optional<QString> furtherBrowserName(const QString &desktopId, const QString &executable);
