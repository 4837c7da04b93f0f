#include "backendURL.h"

#include "preferenceKeys.h"

using namespace Qt::StringLiterals;

QUrl backendURL(const Preferences &preferences, const QString &path)
{
    const auto base = preferences.get<QString>(PreferenceKeys::backendBaseURL())
                          .value_or(u"https://api.quorvel.example/api"_s);
    // Strict: an address with a space in it is a mistake of whoever set it, and guessing what was meant could
    // send the session token to somebody else.
    QUrl url(base + path, QUrl::StrictMode);
    if (!url.isValid()) // the text is not shown: an address may hold a password
        qFatal("the preference \"backendBaseURL\" and a path after it are no URL");
    return url;
}
