#pragma once

#include <QString>

#include <optional>

/// What the browser brings back after a sign-in.
struct AuthCallback
{
    QString session;                 ///< the session token, never empty
    std::optional<QString> email;    ///< none where there is none or it is empty
    std::optional<QString> provider; ///< as the backend wrote it

    bool operator==(const AuthCallback &) const = default;
};

/// Reads "quorvel://auth?session=...&email=...&provider=...". The host and the names are compared exactly, on
/// the text as it came; of several items of one name the first counts. None where the host is another one or
/// there is no session.
std::optional<AuthCallback> readAuthCallback(const QString &url);
