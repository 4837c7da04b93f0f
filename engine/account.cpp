// How the user enters and leaves.
#include "AuthCallback.h"
#include "BackendClient.h"
#include "QuorvelController.h"
#include "UrlOpener.h"
#include "commandLog.h"
#include "controlCharacters.h"
#include "emailAddress.h"
#include "preferenceKeys.h"

#include <QLoggingCategory>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(logAccount, "quorvel.engine.account")

/// The provider's page that the backend names; none where it names no page of the web. Whatever else an
/// address can open on a desktop, no provider asks for a sign-in with it.
std::optional<QUrl> signInPage(const QJsonObject &answer)
{
    const QUrl page(answer.value(u"url"_s).toString());
    const bool isOfTheWeb = page.scheme() == u"https" || page.scheme() == u"http";
    return page.isValid() && isOfTheWeb && !page.host().isEmpty() ? std::optional(page) : std::nullopt;
}

/// The session token of an answer. Without one the user is signed in all the same.
std::optional<QString> sessionIn(const QJsonObject &answer)
{
    const auto session = answer.value(u"session"_s);
    if (!session.isString())
        return std::nullopt;
    if (hasControlCharacters(session.toString())) {
        qCWarning(logAccount, "The backend's session token holds control characters and is not used");
        return std::nullopt;
    }
    return session.toString();
}

} // namespace

AccessMode QuorvelController::loadAccessMode(const Preferences &preferences)
{
    return accessModeFromRawValue(preferences.get<QString>(PreferenceKeys::accessMode()).value_or(QString()));
}

void QuorvelController::continueAsGuest()
{
    qCDebug(logCommand, "continueAsGuest");
    enterWithoutAccount(AccessMode::Guest, text(u"guest_active"));
}

void QuorvelController::signOut()
{
    qCDebug(logCommand, "signOut");
    enterWithoutAccount(AccessMode::None, text(u"auth_required_body"));
}

void QuorvelController::enterWithoutAccount(AccessMode mode, const QString &status)
{
    m_accessMode = mode;
    m_signedInEmail = std::nullopt;
    m_authStatusText = status;
    auto &preferences = m_ports.preferences;
    preferences.setValue(PreferenceKeys::accessMode(), rawValue(mode), Durability::AtOnce);
    preferences.remove(PreferenceKeys::signedInEmail());
    preferences.remove(PreferenceKeys::serverSessionToken());
}

void QuorvelController::requestEmailCode()
{
    qCDebug(logCommand, "requestEmailCode");
    const auto email = normalizedEmail(m_authEmailText);
    if (!looksLikeEmail(email)) {
        m_authStatusText = text(u"invalid_email");
        return;
    }
    m_authStatusText = text(u"sending_code");
    m_ports.backend.postJSON(u"/auth/email/start"_s, {{u"email"_s, email}},
                             whileHere([this](const auto &answer) {
                                 if (const auto *error = std::get_if<BackendError>(&answer))
                                     tellFailedSignIn(u"backend_unavailable", *error);
                                 else
                                     m_authStatusText = text(u"code_sent");
                             }));
}

void QuorvelController::verifyEmailCode()
{
    qCDebug(logCommand, "verifyEmailCode");
    const auto email = normalizedEmail(m_authEmailText);
    const auto code = m_authCodeText.value().trimmed();
    if (email.isEmpty() || code.isEmpty()) {
        m_authStatusText = text(u"enter_email_code");
        return;
    }
    m_authStatusText = text(u"verifying_code");
    m_ports.backend.postJSON(u"/auth/email/verify"_s, {{u"email"_s, email}, {u"code"_s, code}},
                             whileHere([this, email](const auto &answer) {
                                 if (const auto *error = std::get_if<BackendError>(&answer))
                                     tellFailedSignIn(u"auth_failed", *error);
                                 else
                                     enterWithAccount(sessionIn(std::get<QJsonObject>(answer)), email);
                             }));
}

void QuorvelController::openOAuth(const QString &provider)
{
    const bool isYandex = provider == u"yandex";
    qCDebug(logCommand, "openOAuth(%s)", isYandex ? "yandex" : "google");
    const auto path = isYandex ? u"/auth/yandex/start"_s : u"/auth/google/start"_s;
    m_authStatusText = text(u"opening_browser");
    m_ports.backend.getJSON(path, whileHere([this](const auto &answer) {
                                if (const auto *error = std::get_if<BackendError>(&answer))
                                    tellFailedSignIn(u"backend_unavailable", *error);
                                else if (const auto page = signInPage(std::get<QJsonObject>(answer)))
                                    m_ports.urls.open(*page);
                                else
                                    m_authStatusText = text(u"auth_failed");
                            }));
}

void QuorvelController::handleAuthCallback(const QString &url)
{
    qCDebug(logCommand, "handleAuthCallback");
    const auto callback = readAuthCallback(url);
    if (!callback) {
        m_authStatusText = text(u"auth_failed");
        return;
    }
    enterWithAccount(callback->session, callback->email);
    addEvent(u"Signed in with "_s + providerName(*callback) + u"."_s);
}

void QuorvelController::enterWithAccount(const std::optional<QString> &session,
                                         const std::optional<QString> &email)
{
    auto &preferences = m_ports.preferences;
    if (session)
        preferences.setValue(PreferenceKeys::serverSessionToken(), *session, Durability::AtOnce);
    if (email) {
        m_signedInEmail = email;
        preferences.setValue(PreferenceKeys::signedInEmail(), *email, Durability::AtOnce);
    }
    m_accessMode = AccessMode::Account;
    m_authStatusText = text(u"signed_in");
    preferences.setValue(PreferenceKeys::accessMode(), rawValue(AccessMode::Account), Durability::AtOnce);
}

void QuorvelController::tellFailedSignIn(QStringView key, const BackendError &error)
{
    m_authStatusText = text(key) + u": "_s + error.description;
}

std::function<void(const BackendAnswer &)>
QuorvelController::whileHere(std::function<void(const BackendAnswer &)> then)
{
    return [here = QPointer(this), then = std::move(then)](const BackendAnswer &answer) {
        if (here)
            then(answer);
    };
}
