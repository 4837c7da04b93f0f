#include "UserProgress.h"

#include "checkedArithmetic.h"
#include "dayKey.h"

#include <algorithm>
#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

struct TitleFromXP
{
    qint64 atLeast;
    CharacterTitle title;
};

const std::array<TitleFromXP, 6> &titlesHighestFirst()
{
    static const std::array<TitleFromXP, 6> titles{{
        {2400, {u"Exam Quorvelian"_s, u"Страж экзамена"_s, u"crown.fill"_s}},
        {1400, {u"Knowledge Knight"_s, u"Рыцарь знаний"_s, u"shield.lefthalf.filled"_s}},
        {900, {u"Deep Work Adept"_s, u"Адепт deep work"_s, u"brain.head.profile"_s}},
        {500, {u"Exam Runner"_s, u"Экзамен-раннер"_s, u"flame.fill"_s}},
        {200, {u"Focus Scout"_s, u"Разведчик фокуса"_s, u"bolt.fill"_s}},
        {std::numeric_limits<qint64>::min(), {u"Prep Rookie"_s, u"Новичок подготовки"_s, u"figure.walk"_s}},
    }};
    return titles;
}

} // namespace

qint64 levelFor(qint64 totalXP)
{
    return std::max<qint64>(totalXP / xpPerLevel, 0) + 1;
}

qint64 xpWithinLevel(qint64 totalXP)
{
    return totalXP % xpPerLevel;
}

CharacterTitle characterTitleFor(qint64 totalXP)
{
    const auto &titles = titlesHighestFirst();
    return std::find_if(titles.begin(), titles.end(),
                        [&](const auto &each) { return totalXP >= each.atLeast; })
        ->title;
}

UserProgress withAwardedXP(UserProgress progress, qint64 amount)
{
    if (amount >= 1)
        progress.totalXP = checkedAdd(progress.totalXP, amount, "total XP");
    return progress;
}

UserProgress withCompletedStudyDay(UserProgress progress, QDate today)
{
    const auto todayKey = dayKey(today);
    if (progress.lastCompletedStudyDay == todayKey)
        return progress;
    const auto last =
        progress.lastCompletedStudyDay ? dayFromKey(*progress.lastCompletedStudyDay) : std::nullopt;
    const bool continues = last && last->addDays(1) == today;
    progress.currentStreak = continues ? checkedAdd(progress.currentStreak, 1, "current streak") : 1;
    progress.longestStreak = std::max(progress.longestStreak, progress.currentStreak);
    progress.lastCompletedStudyDay = todayKey;
    return progress;
}
