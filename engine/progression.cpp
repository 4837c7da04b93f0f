// XP, levels, titles and streaks.
#include "Clock.h"
#include "QuorvelController.h"
#include "formatDuration.h"

using namespace Qt::StringLiterals;

void QuorvelController::awardXP(qint64 amount, const QString &reason)
{
    if (amount < 1)
        return;
    const auto before = userProgress().totalXP;
    m_userProgress = withAwardedXP(userProgress(), amount);
    const auto after = userProgress().totalXP;
    if (levelFor(before) < levelFor(after))
        addEvent(u"Level up: "_s + characterTitleFor(after).english + u"."_s);
    addEvent(u"+"_s + QString::number(amount) + u" XP. "_s + reason);
    saveUserProgress();
}

void QuorvelController::markCompletedStudyDay()
{
    m_userProgress = withCompletedStudyDay(userProgress(), m_ports.clock.now().date());
}

QString QuorvelController::streakOf(qint64 days) const
{
    return QString::number(days) + u" "_s + text(days == 1 ? u"day" : u"days");
}

void QuorvelController::bindProgressFields()
{
    const auto progress = [this]() -> const UserProgress & { return m_userProgress.value(); };

    m_levelText.setBinding(
        [this, progress] { return text(u"level") + u" "_s + QString::number(levelFor(progress().totalXP)); });
    m_xpText.setBinding(
        [progress] { return u"%1/%2 XP"_s.arg(xpWithinLevel(progress().totalXP)).arg(xpPerLevel); });
    m_characterTitleText.setBinding([this, progress] {
        const auto title = characterTitleFor(progress().totalXP);
        return inBoth(title.english, title.russian);
    });
    m_avatarSymbol.setBinding([progress] { return characterTitleFor(progress().totalXP).avatarSymbol; });
    m_streakText.setBinding([this, progress] { return streakOf(progress().currentStreak); });
    m_bestStreakText.setBinding([this, progress] { return streakOf(progress().longestStreak); });
    m_totalXP.setBinding([progress] { return progress().totalXP; });
    m_totalFocusSeconds.setBinding([progress] { return progress().totalFocusSeconds; });
    m_totalCardProofs.setBinding([progress] { return progress().totalCardProofs; });
    m_progressSummaryText.setBinding([this, progress] {
        const auto xp = QString::number(progress().totalXP);
        const auto focus = formatDuration(progress().totalFocusSeconds);
        const auto proofs = QString::number(progress().totalCardProofs);
        const auto head = m_levelText + u", "_s + m_characterTitleText + u", "_s + xp + u" XP, "_s;
        return head + inBoth(m_streakText + u" streak, "_s + focus + u" total focus, "_s + proofs +
                                 u" card proofs."_s,
                             u"стрик "_s + m_streakText + u", всего фокуса "_s + focus +
                                 u", пруфов карточками "_s + proofs + u"."_s);
    });
}
