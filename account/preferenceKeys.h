#pragma once

#include <QString>

/// The keys of the preferences store.
namespace PreferenceKeys {

inline QString proModeEnabled()
{
    return QStringLiteral("proModeEnabled");
}
inline QString language()
{
    return QStringLiteral("language");
}
inline QString accessMode()
{
    return QStringLiteral("accessMode");
}
inline QString signedInEmail()
{
    return QStringLiteral("signedInEmail");
}
inline QString serverSessionToken()
{
    return QStringLiteral("serverSessionToken");
}
/// Another address of the backend than the built-in one.
inline QString backendBaseURL()
{
    return QStringLiteral("backendBaseURL");
}
/// Study seconds counted on the day of `dayKey`.
inline QString studySeconds(const QString &dayKey)
{
    return QStringLiteral("studySeconds-") + dayKey;
}
/// Study sessions completed on the day of `dayKey`.
inline QString completedSessions(const QString &dayKey)
{
    return QStringLiteral("completedSessions-") + dayKey;
}

} // namespace PreferenceKeys
