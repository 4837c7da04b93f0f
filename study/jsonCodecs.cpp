#include "jsonCodecs.h"

#include "RecordWriter.h"
#include "recordReader.h"

namespace {

using enum Presence;

constexpr RecordFields<QuorvelConfig, 9> configFields{{
    {"studyMinutes", &QuorvelConfig::studyMinutes, Optional},
    {"breakMinutes", &QuorvelConfig::breakMinutes, Optional},
    {"maxIdleSeconds", &QuorvelConfig::maxIdleSeconds, Optional},
    {"requiredProofsToUnlock", &QuorvelConfig::requiredProofsToUnlock, Optional},
    {"blockedApps", &QuorvelConfig::blockedApps, Optional},
    {"blockedDomains", &QuorvelConfig::blockedDomains, Optional},
    {"allowedStudyDomains", &QuorvelConfig::allowedStudyDomains, Optional},
    {"allowedStudyApps", &QuorvelConfig::allowedStudyApps, Optional},
    {"blocklistPresetVersion", &QuorvelConfig::blocklistPresetVersion, Optional},
}};

constexpr RecordFields<UserProgress, 8> progressFields{{
    {"totalXP", &UserProgress::totalXP, Required},
    {"totalFocusSeconds", &UserProgress::totalFocusSeconds, Required},
    {"totalCompletedSessions", &UserProgress::totalCompletedSessions, Required},
    {"totalCardProofs", &UserProgress::totalCardProofs, Required},
    {"currentStreak", &UserProgress::currentStreak, Required},
    {"longestStreak", &UserProgress::longestStreak, Required},
    {"lastCompletedStudyDay", &UserProgress::lastCompletedStudyDay, Optional},
    {"earnedTitles", &UserProgress::earnedTitles, Required},
}};

constexpr RecordFields<StudyCard, 9> cardFields{{
    {"id", &StudyCard::id, Required},
    {"topic", &StudyCard::topic, Optional},
    {"prompt", &StudyCard::prompt, Required},
    {"expectedAnswer", &StudyCard::expectedAnswer, Required},
    {"createdAt", &StudyCard::createdAt, Required},
    {"correctCount", &StudyCard::correctCount, Required},
    {"wrongCount", &StudyCard::wrongCount, Required},
    {"lastAskedAt", &StudyCard::lastAskedAt, Optional},
    {"lastCorrectAt", &StudyCard::lastCorrectAt, Optional},
}};

constexpr RecordFields<StudyTask, 6> taskFields{{
    {"id", &StudyTask::id, Required},
    {"title", &StudyTask::title, Required},
    {"createdAt", &StudyTask::createdAt, Required},
    {"completedAt", &StudyTask::completedAt, Optional},
    {"completedSessionID", &StudyTask::completedSessionID, Optional},
    {"sourceCardID", &StudyTask::sourceCardID, Optional},
}};

template <typename Record, std::size_t count>
QByteArray encodeOne(const Record &record, const RecordFields<Record, count> &fields)
{
    RecordWriter writer;
    writer.writeRecord(record, fields);
    return writer.take();
}

template <typename Record, std::size_t count>
QByteArray encodeList(const std::deque<Record> &records, const RecordFields<Record, count> &fields)
{
    RecordWriter writer;
    writer.writeRecords(records, fields);
    return writer.take();
}

template <typename Record, std::size_t count>
Result<Record> decodeOne(const QByteArray &json, const RecordFields<Record, count> &fields,
                         const std::type_identity_t<Record> &start)
{
    const auto records = readRecords(json, fields, start, RecordsAre::One);
    if (!records)
        return records.failure();
    return records.value().front();
}

} // namespace

QByteArray encodeConfig(const QuorvelConfig &config)
{
    return encodeOne(config, configFields);
}

Result<QuorvelConfig> decodeConfig(const QByteArray &json)
{
    QuorvelConfig start = QuorvelConfig::defaults();
    start.blocklistPresetVersion = 0;
    return decodeOne(json, configFields, start);
}

QByteArray encodeUserProgress(const UserProgress &progress)
{
    return encodeOne(progress, progressFields);
}

Result<UserProgress> decodeUserProgress(const QByteArray &json)
{
    return decodeOne(json, progressFields, {});
}

QByteArray encodeStudyCards(const std::deque<StudyCard> &cards)
{
    return encodeList(cards, cardFields);
}

QByteArray encodeStudyTasks(const std::deque<StudyTask> &tasks)
{
    return encodeList(tasks, taskFields);
}

Result<std::deque<StudyCard>> decodeStudyCards(const QByteArray &json)
{
    return readRecords(json, cardFields, {}, RecordsAre::List);
}

Result<std::deque<StudyTask>> decodeStudyTasks(const QByteArray &json)
{
    return readRecords(json, taskFields, {}, RecordsAre::List);
}
