// Switching the interface language.
#include "QuorvelController.h"
#include "commandLog.h"
#include "preferenceKeys.h"

AppLanguage QuorvelController::loadLanguage(const Preferences &preferences)
{
    return storedLanguage(preferences);
}

void QuorvelController::setLanguage(AppLanguage language)
{
    qCDebug(logCommand, "setLanguage(%s)", qPrintable(rawValue(language)));
    m_language = language;
    m_ports.preferences.setValue(PreferenceKeys::language(), rawValue(language), Durability::AtOnce);
    refreshLocalizedRuntimeText();
}

void QuorvelController::refreshLocalizedRuntimeText()
{
    if (m_activeAppName.value() == u"Unknown" || m_activeAppName.value() == u"Неизвестно")
        m_activeAppName = text(u"unknown");
    switch (m_mode) {
    case Mode::Ready:
        m_statusMessage = text(u"ready_status");
        break;
    case Mode::Locked:
        m_statusMessage = text(u"locked_status");
        break;
    case Mode::Studying:
        m_statusMessage = m_studyStartMessage.value();
        break;
    case Mode::BreakTime:
        m_statusMessage = text(u"manual_break_status");
        break;
    }
    m_quizFeedback = text(u"quiz_initial");
    if (!m_isAICoachRunning)
        m_aiOutputText = text(u"ai_initial");
}
