// The settings: migration, merging, saving, and the drafts that the interface edits.
#include "Clock.h"
#include "QuorvelController.h"
#include "preferenceKeys.h"
#include "settingsDrafts.h"

using namespace Qt::StringLiterals;

void QuorvelController::migrateBlocklistsIfNeeded()
{
    if (!needsBlocklistMigration(config()))
        return;
    m_config = withBuiltInBlocklists(config());
    saveConfig();
}

void QuorvelController::mergeDefaultBlocklists()
{
    m_config = withBuiltInBlocklists(config());
    saveConfig();
    syncDraftsFromConfig();
    addEvent(u"Expanded default blocklists merged."_s);
}

void QuorvelController::setProModeEnabled(bool enabled)
{
    m_proModeEnabled = enabled;
    m_ports.preferences.setValue(PreferenceKeys::proModeEnabled(), enabled, Durability::AtOnce);
    addEvent(enabled ? u"Pro mode enabled."_s : u"Pro mode disabled."_s);
}

void QuorvelController::syncDraftsFromConfig()
{
    const auto drafts = draftsFrom(config());
    m_studyMinutesText = drafts.studyMinutesText;
    m_breakMinutesText = drafts.breakMinutesText;
    m_maxIdleSecondsText = drafts.maxIdleSecondsText;
    m_requiredProofsText = drafts.requiredProofsText;
    m_blockedAppsText = drafts.blockedAppsText;
    m_blockedDomainsText = drafts.blockedDomainsText;
    m_allowedStudyDomainsText = drafts.allowedStudyDomainsText;
    m_allowedStudyAppsText = drafts.allowedStudyAppsText;
}

void QuorvelController::saveConfig()
{
    if (const auto saved = m_records.saveConfig(config(), m_ports.clock.now()); !saved.ok())
        addEvent(u"Could not save settings: "_s + saved.reason());
}

void QuorvelController::saveUserProgress()
{
    if (const auto saved = m_records.saveUserProgress(userProgress(), m_ports.clock.now()); !saved.ok())
        addEvent(u"Could not save progress: "_s + saved.reason());
}
