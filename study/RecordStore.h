#pragma once

#include "QuorvelConfig.h"
#include "RecordFiles.h"
#include "RollingCopies.h"
#include "StudyCard.h"
#include "StudyTask.h"
#include "UserProgress.h"

#include <QDateTime>
#include <QSet>

#include <deque>

/// Loads and saves the records of the data folder. Loading never fails: a file that is missing, unreadable or
/// not decodable gives the record of a fresh start. Such a file stays as it is until the first save of its
/// kind, and that save first keeps the old bytes aside as "<name>.unreadable-<UTC time>". From time to time a
/// save first makes a rolling copy of the file that it replaces.
class RecordStore
{
public:
    explicit RecordStore(RecordFiles &files);

    QuorvelConfig loadConfig();
    std::deque<StudyTask> loadStudyTasks();
    std::deque<StudyCard> loadStudyCards();
    UserProgress loadUserProgress();

    /// `now` names the copy of a file that could not be decoded. A copy that cannot be made fails the save,
    /// so that nothing is lost.
    Result<> saveConfig(const QuorvelConfig &config, const QDateTime &now);
    Result<> saveStudyTasks(const std::deque<StudyTask> &tasks, const QDateTime &now);
    Result<> saveStudyCards(const std::deque<StudyCard> &cards, const QDateTime &now);
    Result<> saveUserProgress(const UserProgress &progress, const QDateTime &now);

private:
    template <typename Record, typename Decode>
    Record load(const QString &name, Decode decode, const Record &fallback);
    template <typename Decode>
    Result<> save(const QString &name, const QByteArray &bytes, Decode decode, const QDateTime &now);
    bool isGone(const QString &name);

    RecordFiles &m_files;
    RollingCopies m_copies;
    QSet<QString> m_notDecoded; ///< files whose present bytes must be kept before they are replaced
};
