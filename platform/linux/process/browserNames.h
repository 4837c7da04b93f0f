#pragma once

#include <QString>

#include <optional>

/// The name under which a browser's tabs can be asked for ("Google Chrome", "Chromium"), whatever its desktop
/// entry calls it in whichever language. No value for other programs and for beta, developer and nightly
/// editions, which keep their own names. Either argument may be empty.
std::optional<QString> supportedBrowserName(const QString &desktopId, const QString &executable);
