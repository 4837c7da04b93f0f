// How the user enters and leaves.
#include "QuorvelController.h"
#include "preferenceKeys.h"

AccessMode QuorvelController::loadAccessMode(const Preferences &preferences)
{
    return accessModeFromRawValue(preferences.get<QString>(PreferenceKeys::accessMode()).value_or(QString()));
}

void QuorvelController::continueAsGuest()
{
    enterWithoutAccount(AccessMode::Guest, text(u"guest_active"));
}

void QuorvelController::signOut()
{
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
