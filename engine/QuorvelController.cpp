#include "QuorvelController.h"

#include "Clock.h"
#include "L10n.h"
#include "RunningApplications.h"
#include "SystemIdle.h"
#include "checkedArithmetic.h"
#include "dayKey.h"
#include "formatDuration.h"
#include "preferenceKeys.h"
#include "statusTexts.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

QuorvelController::QuorvelController(const ControllerPorts &ports, QObject *parent)
    : QObject(parent)
    , m_ports(ports)
    , m_records(ports.files)
    , m_currentDayKey(dayKey(ports.clock.now().date()))
{
    loadStoredState();
    bindDerivedFields();

    m_timer.setInterval(1s);
    // Queued, so that a tick never runs inside another job; a controller that is gone gets none.
    connect(&m_timer, &QTimer::timeout, this, &QuorvelController::tick, Qt::QueuedConnection);
    m_timer.start();
}

QuorvelController::~QuorvelController() = default;

void QuorvelController::loadStoredState()
{
    m_config = m_records.loadConfig();
    migrateBlocklistsIfNeeded();

    m_language = loadLanguage(m_ports.preferences);
    m_proModeEnabled = m_ports.preferences.get<bool>(PreferenceKeys::proModeEnabled()).value_or(false);
    m_accessMode = loadAccessMode(m_ports.preferences);
    m_signedInEmail = m_ports.preferences.get<QString>(PreferenceKeys::signedInEmail());

    m_authStatusText = text(u"auth_required_body");
    m_activeAppName = text(u"unknown");
    m_statusMessage = text(u"ready_status");
    m_quizFeedback = text(u"quiz_initial");
    m_aiOutputText = text(u"ai_initial");

    m_studyTasks.replaceAll(m_records.loadStudyTasks());
    m_studyCards.replaceAll(m_records.loadStudyCards());
    m_userProgress = m_records.loadUserProgress();

    askNextStudyCard(false);
    syncDraftsFromConfig();
    loadTodayStats();
    m_studyRemaining = checkedSeconds(config().studyMinutes, "study minutes");
}

void QuorvelController::bindDerivedFields()
{
    const auto required = [this] { return m_requiredProofsToUnlock.value(); };

    // First, so that what reads them reads no stale value.
    m_requiredProofsToUnlock.setBinding([this] { return m_config.value().requiredProofsToUnlock; });
    bindCardFields();
    bindTaskFields();
    m_readinessIsShort.setBinding(
        [this, required] { return StatusTexts::lacksCards(required(), m_topicCardCount); });

    m_isBlockingActive.setBinding([this] { return StatusTexts::blocks(m_mode); });
    m_modeText.setBinding([this] { return StatusTexts::modeName(m_mode, m_language); });
    m_canStartStudy.setBinding(
        [this, required] { return StatusTexts::canStartStudy(m_mode, required(), m_topicCardCount); });
    m_startReadinessText.setBinding([this, required] {
        return StatusTexts::startReadiness(m_mode, required(), m_topicCardCount, m_language);
    });
    m_studyStartMessage.setBinding(
        [this, required] { return StatusTexts::studyStart(required(), m_language); });
    m_proofWaitMessage.setBinding([this, required] {
        return StatusTexts::proofWait(required(), m_currentSessionCardProofCount, m_language);
    });
    m_proofProgressText.setBinding([this, required] {
        return StatusTexts::proofProgress(required(), m_currentSessionCardProofCount, m_language);
    });
    m_proofPolicyText.setBinding(
        [this, required] { return StatusTexts::proofPolicy(required(), m_language); });

    m_primaryTimerTitle.setBinding([this] { return StatusTexts::primaryTimerTitle(m_mode, m_language); });
    m_primaryTimerText.setBinding(
        [this] { return formatDuration(m_mode == Mode::BreakTime ? m_breakRemaining : m_studyRemaining); });
    m_sessionProgress.setBinding([this] {
        const auto &settings = m_config.value();
        return m_mode == Mode::BreakTime
                   ? StatusTexts::sessionProgress(m_breakRemaining,
                                                  checkedSeconds(settings.breakMinutes, "break minutes"))
                   : StatusTexts::sessionProgress(m_studyRemaining,
                                                  checkedSeconds(settings.studyMinutes, "study minutes"));
    });
    m_focusSubtitle.setBinding([this, required] {
        return StatusTexts::focusSubtitle(m_mode, required(), m_topicCardCount, m_statusMessage, m_language);
    });
    m_unsavedText.setBinding([this] { return StatusTexts::unsaved(m_failedSaves, m_language); });
    m_blockedAppSummaryText.setBinding(
        [this] { return StatusTexts::blockedAppSummary(m_mode, m_blockedRunningAppNames, m_language); });

    bindProgressFields();
}

QString QuorvelController::text(QStringView key) const
{
    return L10n::t(key, m_language);
}

QString QuorvelController::inBoth(const QString &english, const QString &russian) const
{
    return inLanguage(m_language, english, russian);
}

void QuorvelController::tick()
{
    refreshDayIfNeeded();

    const auto frontmost = m_ports.applications.frontmost();
    m_activeAppName = frontmost && frontmost->localizedName ? *frontmost->localizedName : text(u"unknown");
    m_idleSeconds = m_ports.idle.seconds();

    const auto blocked = findBlockedRunningApps();
    if (m_isBlockingActive) {
        m_blockedRunningAppNames = sortedDisplayNames(blocked);
        enforceAppBlocks(blocked);
        checkBrowsersIfNeeded();
        checkFurtherBrowsersIfNeeded();
    } else {
        m_blockedRunningAppNames = QStringList();
    }

    switch (m_mode) {
    case Mode::Ready:
        m_statusMessage = text(u"ready_status");
        break;
    case Mode::Locked:
        m_statusMessage =
            inBoth(u"Manual lock is active. Start Study to run a timed session."_s,
                   u"Ручная блокировка активна. Нажми «Начать учёбу», чтобы запустить сессию."_s);
        break;
    case Mode::Studying:
        updateStudyTimer();
        break;
    case Mode::BreakTime:
        updateBreakTimer();
        break;
    }
}
