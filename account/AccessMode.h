#pragma once

#include <QObject>
#include <QString>

namespace AccessModeEnum {
Q_NAMESPACE
/// How the user entered: not yet (or signed out), with everything kept on this machine, or with an account.
enum class AccessMode { None, Guest, Account };
Q_ENUM_NS(AccessMode)
} // namespace AccessModeEnum
using AccessModeEnum::AccessMode;

/// "none", "guest" or "account": the form in which the mode is stored.
QString rawValue(AccessMode mode);

/// The mode stored as exactly `raw`; any other text reads as none.
AccessMode accessModeFromRawValue(QStringView raw);
