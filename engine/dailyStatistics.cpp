// Today's counters, kept for each calendar day.
#include "Clock.h"
#include "QuorvelController.h"
#include "dayKey.h"
#include "preferenceKeys.h"

void QuorvelController::refreshDayIfNeeded()
{
    const auto today = dayKey(m_ports.clock.now().date());
    if (today == m_currentDayKey)
        return;
    m_currentDayKey = today;
    loadTodayStats();
}

void QuorvelController::loadTodayStats()
{
    const auto &preferences = m_ports.preferences;
    m_todayStudySeconds = preferences.get<qint64>(PreferenceKeys::studySeconds(m_currentDayKey)).value_or(0);
    m_completedSessions =
        preferences.get<qint64>(PreferenceKeys::completedSessions(m_currentDayKey)).value_or(0);
}

void QuorvelController::saveTodayStats(Durability durability)
{
    auto &preferences = m_ports.preferences;
    preferences.setValue(PreferenceKeys::studySeconds(m_currentDayKey), todayStudySeconds(), durability);
    preferences.setValue(PreferenceKeys::completedSessions(m_currentDayKey), completedSessions(), durability);
}
