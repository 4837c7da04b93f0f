// The settings: migration, merging, saving, and the drafts that the interface edits.
#include "Clock.h"
#include "QuorvelController.h"
#include "checkedArithmetic.h"
#include "commandLog.h"
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

void QuorvelController::saveSettings()
{
    qCDebug(logCommand, "saveSettings");
    m_config = configFrom({.studyMinutesText = m_studyMinutesText,
                           .breakMinutesText = m_breakMinutesText,
                           .maxIdleSecondsText = m_maxIdleSecondsText,
                           .requiredProofsText = m_requiredProofsText,
                           .blockedAppsText = m_blockedAppsText,
                           .blockedDomainsText = m_blockedDomainsText,
                           .allowedStudyDomainsText = m_allowedStudyDomainsText,
                           .allowedStudyAppsText = m_allowedStudyAppsText},
                          config());
    saveConfig();
    syncDraftsFromConfig();
    addEvent(u"Settings saved."_s);
    followChangedSettings();
}

void QuorvelController::resetDefaultSettings()
{
    qCDebug(logCommand, "resetDefaultSettings");
    m_config = QuorvelConfig::defaults();
    saveConfig();
    syncDraftsFromConfig();
    addEvent(u"Default settings restored."_s);
    followChangedSettings();
}

void QuorvelController::followChangedSettings()
{
    // A running clock goes on as it is.
    if (m_mode == Mode::Ready || m_mode == Mode::Locked)
        m_studyRemaining = checkedSeconds(config().studyMinutes, "study minutes");
}

void QuorvelController::mergeDefaultBlocklists()
{
    qCDebug(logCommand, "mergeDefaultBlocklists");
    m_config = withBuiltInBlocklists(config());
    saveConfig();
    syncDraftsFromConfig();
    addEvent(u"Expanded default blocklists merged."_s);
}

void QuorvelController::setProModeEnabled(bool enabled)
{
    qCDebug(logCommand, "setProModeEnabled(%s)", enabled ? "true" : "false");
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
    tellFailedSave(u"settings"_s, m_records.saveConfig(config(), m_ports.clock.now()));
}

void QuorvelController::saveStudyTasks()
{
    tellFailedSave(u"tasks"_s, m_records.saveStudyTasks(studyTasks(), m_ports.clock.now()));
}

void QuorvelController::saveStudyCards()
{
    tellFailedSave(u"cards"_s, m_records.saveStudyCards(studyCards(), m_ports.clock.now()));
}

void QuorvelController::saveUserProgress()
{
    tellFailedSave(u"progress"_s, m_records.saveUserProgress(userProgress(), m_ports.clock.now()));
}

void QuorvelController::tellFailedSave(const QString &what, const Result<> &saved)
{
    auto failed = m_failedSaves.value();
    failed.remove(what);
    if (!saved.ok()) {
        failed.insert(what, saved.reason());
        addEvent(u"Could not save "_s + what + u": "_s + saved.reason());
    }
    m_failedSaves = failed;
}
