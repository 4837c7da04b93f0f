#include "NetworkBackendClient.h"

#include "AppLanguage.h"
#include "BackendCall.h"
#include "backendURL.h"
#include "preferenceKeys.h"

#include <QJsonDocument>
#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(lcBackend, "quorvel.backend")

namespace {

bool canStandInAHeader(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= QChar(0x20) && character != QChar(0x7f) && character <= QChar(0xff);
    });
}

} // namespace

NetworkBackendClient::NetworkBackendClient(Preferences &preferences, Timeouts timeouts, QObject *parent)
    : QObject(parent)
    , m_preferences(preferences)
    , m_timeouts(timeouts)
{}

void NetworkBackendClient::postJSON(const QString &path, const QJsonObject &body, Done done)
{
    start({.url = backendURL(m_preferences, path),
           .body = QJsonDocument(body).toJson(QJsonDocument::Compact),
           .authorization = authorization(),
           .language = language(),
           .timeout = m_timeouts.post},
          std::move(done));
}

void NetworkBackendClient::getJSON(const QString &path, Done done)
{
    start({.url = backendURL(m_preferences, path),
           .body = {},
           .authorization = {},
           .language = language(),
           .timeout = m_timeouts.get},
          std::move(done));
}

/// Goes without where the token cannot be sent as it is: the backend then asks to sign in, which works.
QByteArray NetworkBackendClient::authorization() const
{
    const auto token = m_preferences.get<QString>(PreferenceKeys::serverSessionToken()).value_or(QString());
    if (token.isEmpty())
        return {};
    if (!canStandInAHeader(token)) {
        qCWarning(lcBackend, "the stored session token cannot stand in a header, so it is not sent");
        return {};
    }
    return "Bearer " + token.toLatin1();
}

QByteArray NetworkBackendClient::language() const
{
    return rawValue(storedLanguage(m_preferences)).toLatin1();
}

void NetworkBackendClient::start(BackendRequest request, Done done)
{
    new BackendCall(std::move(request), m_timeouts.whole, std::move(done), this);
}
