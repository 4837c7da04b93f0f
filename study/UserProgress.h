#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>

/// What the user has earned. The order of the fields is the order of the keys in the progress file.
struct UserProgress
{
    qint64 totalXP = 0;
    qint64 totalFocusSeconds = 0;      ///< all valid study seconds ever counted
    qint64 totalCompletedSessions = 0; ///< study sessions
    qint64 totalCardProofs = 0;
    qint64 currentStreak = 0; ///< days in a row with a completed session, ending on the last such day
    qint64 longestStreak = 0; ///< days
    std::optional<QString> lastCompletedStudyDay; ///< day key of the last day with a completed session
    QStringList earnedTitles;                     ///< kept as it was loaded; nothing earns an entry

    bool operator==(const UserProgress &) const = default;
};

/// XP that a level spans; level 1 begins at 0.
inline constexpr qint64 xpPerLevel = 100;

/// Level reached with `totalXP`: 1 and up, also for a negative total.
qint64 levelFor(qint64 totalXP);

/// XP within the present level, as the remainder of the total by the level's span.
qint64 xpWithinLevel(qint64 totalXP);

/// A rank that XP gives: its name in both languages and the symbol of its avatar.
struct CharacterTitle
{
    QString english;
    QString russian;
    QString avatarSymbol;

    bool operator==(const CharacterTitle &) const = default;
};

CharacterTitle characterTitleFor(qint64 totalXP);

/// The progress with `amount` more XP. Anything below 1 changes nothing. Overflow ends the program.
UserProgress withAwardedXP(UserProgress progress, qint64 amount);

/// The progress after a study session was completed on `today`: a streak grows by one where the last
/// completed day was yesterday, stays on the same day, and starts again at 1 in every other case.
UserProgress withCompletedStudyDay(UserProgress progress, QDate today);
