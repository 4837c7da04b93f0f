#pragma once

#include <QString>

#include <optional>

/// What the browser brings back after a sign-in. No value holds a control character.
struct AuthCallback
{
    QString session;                 ///< the session token, never empty
    std::optional<QString> email;    ///< none where there is none or it is empty
    std::optional<QString> provider; ///< as the backend wrote it

    bool operator==(const AuthCallback &) const = default;
};

/// The longest callback that is read, in UTF-16 units: far more than a server takes as a token. Any page can
/// have the desktop hand over such an address, so what is longer is not kept.
inline constexpr qsizetype longestAuthCallback = 65536;

/// Reads "quorvel://auth?session=...&email=...&provider=...". The host and the names are compared exactly, on
/// the text as it came; of several items of one name the first counts. Values are percent-decoded; one that
/// is no UTF-8, has a "%" without two hexadecimal digits or holds a control character counts as absent, and
/// "+" is a plus. Which scheme it is is for the caller to check. None where there is no scheme, the host is
/// another one, or there is no session.
std::optional<AuthCallback> readAuthCallback(const QString &url);

/// The name of the provider in an English sentence: each word with its first letter in capitals and the rest
/// in lower case; "OAuth" where there is none.
QString providerName(const AuthCallback &callback);
