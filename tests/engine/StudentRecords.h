#pragma once

#include "AppLanguage.h"
#include "QuorvelConfig.h"
#include "StudyCard.h"
#include "StudyTask.h"
#include "UserProgress.h"

#include <QDateTime>

#include <deque>
#include <map>
#include <set>

/// What the program must know of a student, kept by hand beside it: told of everything that happens, it
/// works each figure out anew, from nothing that the program has worked out.
class StudentRecords
{
public:
    enum class Mode { Ready, Locked, Studying, BreakTime };

    struct Day
    {
        qint64 studySeconds = 0;
        qint64 completedSessions = 0;
    };

    QuorvelConfig config = QuorvelConfig::defaults();
    std::deque<StudyCard> cards; ///< newest first
    std::deque<StudyTask> tasks; ///< newest first
    UserProgress progress;
    std::map<QDate, Day> days; ///< those with a counted second
    AppLanguage language = AppLanguage::English;
    bool proMode = false;

    Mode mode = Mode::Ready;
    QString topic; ///< as it is written on the cards; empty: all
    qint64 studyRemaining = 25 * 60;
    qint64 breakRemaining = 0;
    std::set<QUuid> proven; ///< cards that count in this session

    Day today() const
    {
        const auto day = days.find(m_today);
        return day == days.end() ? Day() : day->second;
    }
    qint64 matchingCards() const
    {
        return std::count_if(cards.begin(), cards.end(),
                             [this](const auto &card) { return isOnTopic(card); });
    }
    bool canStart() const
    {
        const auto wanted = config.requiredProofsToUnlock;
        return mode != Mode::Studying && (wanted == 0 || matchingCards() >= wanted);
    }

    /// The program starts again at `now`. What it had not written is lost: seconds since the last XP, of the
    /// total alone.
    void restart(const QDateTime &now)
    {
        progress = m_written;
        topic.clear();
        goTo(Mode::Ready);
        m_today = now.date();
    }

    /// A heartbeat; `counts`: whether study counts in it.
    void second(const QDateTime &now, bool counts)
    {
        m_now = now;
        m_today = now.date();
        if (mode == Mode::BreakTime && --breakRemaining == 0)
            goTo(Mode::Ready);
        else if (mode == Mode::Studying && counts && studyRemaining > 0)
            countSecond();
        completeIfDone();
    }

    void start()
    {
        goTo(Mode::Studying);
        m_unpaidSeconds = 0;
    }
    void leaveTo(Mode to)
    {
        goTo(to);
        m_unpaidSeconds = 0;
    }
    void takeBreak(qint64 minutes)
    {
        leaveTo(Mode::BreakTime);
        breakRemaining = minutes * 60;
    }
    void configure(const QuorvelConfig &to)
    {
        config = to;
        if (mode == Mode::Ready || mode == Mode::Locked)
            studyRemaining = config.studyMinutes * 60;
    }

    void answer(const QUuid &id, bool right, const QDateTime &now)
    {
        m_now = now;
        auto &card =
            *std::find_if(cards.begin(), cards.end(), [&](const auto &each) { return each.id == id; });
        card.lastAskedAt = inWholeSeconds(now);
        ++(right ? card.correctCount : card.wrongCount);
        if (!right)
            return;
        card.lastCorrectAt = card.lastAskedAt;
        const bool counts = mode == Mode::Studying && config.requiredProofsToUnlock > 0 && isOnTopic(card);
        if (!counts || !proven.insert(id).second)
            return;
        ++progress.totalCardProofs;
        award(10);
        completeIfDone();
    }
    void complete(StudyTask &task, const QDateTime &now)
    {
        task.completedAt = inWholeSeconds(now);
        award(3);
    }

    static QDateTime inWholeSeconds(const QDateTime &time)
    {
        return QDateTime::fromSecsSinceEpoch(time.toSecsSinceEpoch(), Qt::UTC);
    }

private:
    bool isOnTopic(const StudyCard &card) const { return topic.isEmpty() || card.topic == topic; }
    void goTo(Mode to)
    {
        mode = to;
        studyRemaining = config.studyMinutes * 60;
        breakRemaining = 0;
        proven.clear();
    }
    void award(qint64 amount)
    {
        progress.totalXP += amount;
        m_written = progress;
    }
    void countSecond()
    {
        --studyRemaining;
        ++days[m_today].studySeconds;
        ++progress.totalFocusSeconds;
        if (++m_unpaidSeconds == 60) {
            m_unpaidSeconds = 0;
            award(1);
        }
    }
    void completeIfDone()
    {
        if (mode != Mode::Studying || studyRemaining > 0 ||
            qint64(proven.size()) < config.requiredProofsToUnlock)
            return;
        ++days[m_today].completedSessions;
        ++progress.totalCompletedSessions;
        completeDay(m_now.date());
        award(25);
        goTo(Mode::BreakTime);
        studyRemaining = 0;
        breakRemaining = config.breakMinutes * 60;
    }
    void completeDay(QDate day)
    {
        const auto last = QDate::fromString(progress.lastCompletedStudyDay.value_or(QString()), Qt::ISODate);
        if (last == day)
            return;
        progress.currentStreak = last.isValid() && last.daysTo(day) == 1 ? progress.currentStreak + 1 : 1;
        progress.longestStreak = std::max(progress.longestStreak, progress.currentStreak);
        progress.lastCompletedStudyDay = day.toString(Qt::ISODate);
    }

    UserProgress m_written;
    QDate m_today;
    QDateTime m_now;
    qint64 m_unpaidSeconds = 0;
};
