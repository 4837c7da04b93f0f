// The modes and their clocks: commands that change the mode, the second of study and of break, and the
// opening of a break.
#include "QuorvelController.h"
#include "checkedArithmetic.h"
#include "commandLog.h"
#include "statusTexts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// A session and a break last at least one minute.
constexpr qint64 shortestClock = 60;

/// XP for a completed session.
constexpr qint64 sessionXP = 25;

/// Counted study seconds that earn one XP.
constexpr qint64 secondsPerXP = 60;

} // namespace

void QuorvelController::startStudy()
{
    qCDebug(logCommand, "startStudy");
    if (!m_canStartStudy) {
        m_statusMessage = m_startReadinessText.value();
        addEvent(u"Study start blocked: "_s + m_startReadinessText);
        return;
    }
    m_studyRemaining = std::max(checkedSeconds(config().studyMinutes, "study minutes"), shortestClock);
    m_breakRemaining = 0;
    m_currentSessionID = QUuid::createUuid();
    m_currentSessionProofCardIDs.clear();
    m_currentSessionCardProofCount = 0;
    m_focusSecondsSinceXPAward = 0;
    m_mode = Mode::Studying;
    if (!activeStudyCard())
        askNextStudyCard(false);
    addEvent(u"Study session started."_s);
    m_statusMessage = m_studyStartMessage.value();
    tick();
}

void QuorvelController::lockNow()
{
    qCDebug(logCommand, "lockNow");
    leaveClocks(Mode::Locked, u"Locked manually."_s, text(u"locked_status"));
}

void QuorvelController::stopQuorvel()
{
    qCDebug(logCommand, "stopQuorvel");
    leaveClocks(Mode::Ready, u"Quorvel stopped. Blocking is off."_s, text(u"ready_status"));
}

void QuorvelController::leaveClocks(Mode mode, const QString &event, const QString &status)
{
    m_mode = mode;
    m_studyRemaining = checkedSeconds(config().studyMinutes, "study minutes");
    m_breakRemaining = 0;
    abandonSession();
    addEvent(event);
    m_statusMessage = status;
    tick();
}

void QuorvelController::unlockManualBreak(qint64 minutes)
{
    qCDebug(logCommand, "unlockManualBreak(%lld)", minutes);
    m_mode = Mode::BreakTime;
    m_breakRemaining = std::max(checkedSeconds(minutes, "break minutes"), shortestClock);
    m_studyRemaining = checkedSeconds(config().studyMinutes, "study minutes");
    abandonSession();
    addEvent(u"Manual break started."_s);
    m_statusMessage = text(u"manual_break_status");
}

void QuorvelController::abandonSession()
{
    forgetSession();
    m_focusSecondsSinceXPAward = 0;
}

void QuorvelController::forgetSession()
{
    m_currentSessionID.reset();
    m_currentSessionProofCardIDs.clear();
    m_currentSessionCardProofCount = 0;
}

void QuorvelController::updateStudyTimer()
{
    const auto moment = validateStudyMoment();
    if (!moment.isValid)
        m_statusMessage = moment.reason;
    else if (m_studyRemaining >= 1)
        countStudySecond();
    else
        m_statusMessage = m_proofWaitMessage.value();
    tryUnlockBreakIfReady();
}

void QuorvelController::countStudySecond()
{
    m_studyRemaining = m_studyRemaining - 1;
    m_todayStudySeconds = checkedAdd(m_todayStudySeconds, 1, "study seconds of today");
    auto progress = userProgress();
    progress.totalFocusSeconds = checkedAdd(progress.totalFocusSeconds, 1, "total focus seconds");
    m_userProgress = progress;

    ++m_focusSecondsSinceXPAward;
    const bool earnsXP = m_focusSecondsSinceXPAward >= secondsPerXP;
    if (earnsXP) {
        m_focusSecondsSinceXPAward -= secondsPerXP;
        awardXP(1, u"Focused for one minute."_s);
    }
    // The second that writes the progress anyway also makes the counters durable; the others cost no sync.
    saveTodayStats(earnsXP ? Durability::AtOnce : Durability::Soon);
    m_statusMessage = StatusTexts::counting(m_proofProgressText, m_activeAppName, m_language);
}

void QuorvelController::tryUnlockBreakIfReady()
{
    if (m_mode != Mode::Studying || m_studyRemaining != 0)
        return;
    if (m_currentSessionCardProofCount < config().requiredProofsToUnlock) {
        m_statusMessage = m_proofWaitMessage.value();
        return;
    }
    completeStudySession();
}

void QuorvelController::completeStudySession()
{
    m_completedSessions = checkedAdd(m_completedSessions, 1, "completed sessions of today");
    auto progress = userProgress();
    progress.totalCompletedSessions =
        checkedAdd(progress.totalCompletedSessions, 1, "total completed sessions");
    m_userProgress = progress;
    markCompletedStudyDay();
    awardXP(sessionXP, u"Study session completed."_s);
    saveTodayStats(Durability::AtOnce);
    saveUserProgress();
    m_mode = Mode::BreakTime;
    m_breakRemaining = std::max(checkedSeconds(config().breakMinutes, "break minutes"), shortestClock);
    forgetSession();
    addEvent(u"Study session completed. Break unlocked."_s);
    m_statusMessage = inBoth(u"Break unlocked."_s, u"Отдых открыт."_s);
}

void QuorvelController::updateBreakTimer()
{
    m_breakRemaining = std::max<qint64>(m_breakRemaining - 1, 0);
    m_statusMessage =
        inBoth(u"Break is active. Entertainment is allowed."_s, u"Отдых активен. Развлечения доступны."_s);
    if (m_breakRemaining > 0)
        return;
    m_mode = Mode::Ready;
    m_studyRemaining = checkedSeconds(config().studyMinutes, "study minutes");
    addEvent(u"Break ended. Returned to Ready."_s);
    m_statusMessage = inBoth(u"Break ended. Blocking is off until you start again."_s,
                             u"Перерыв закончился. Блокировка выключена до нового старта."_s);
}
