#include "RecordStore.h"

#include "jsonCodecs.h"
#include "recordFileNames.h"
#include "recordTime.h"
#include "studyLog.h"

using namespace Qt::StringLiterals;

RecordStore::RecordStore(RecordFiles &files)
    : m_files(files)
    , m_copies(files)
{}

QuorvelConfig RecordStore::loadConfig()
{
    return load(RecordFileNames::config, decodeConfig, QuorvelConfig::defaults());
}

std::deque<StudyTask> RecordStore::loadStudyTasks()
{
    return load(RecordFileNames::studyTasks, decodeStudyTasks, std::deque<StudyTask>());
}

std::deque<StudyCard> RecordStore::loadStudyCards()
{
    return load(RecordFileNames::studyCards, decodeStudyCards, std::deque<StudyCard>());
}

UserProgress RecordStore::loadUserProgress()
{
    return load(RecordFileNames::progress, decodeUserProgress, UserProgress());
}

Result<> RecordStore::saveConfig(const QuorvelConfig &config, const QDateTime &now)
{
    return save(RecordFileNames::config, encodeConfig(config), decodeConfig, now);
}

Result<> RecordStore::saveStudyTasks(const std::deque<StudyTask> &tasks, const QDateTime &now)
{
    return save(RecordFileNames::studyTasks, encodeStudyTasks(tasks), decodeStudyTasks, now);
}

Result<> RecordStore::saveStudyCards(const std::deque<StudyCard> &cards, const QDateTime &now)
{
    return save(RecordFileNames::studyCards, encodeStudyCards(cards), decodeStudyCards, now);
}

Result<> RecordStore::saveUserProgress(const UserProgress &progress, const QDateTime &now)
{
    return save(RecordFileNames::progress, encodeUserProgress(progress), decodeUserProgress, now);
}

template <typename Record, typename Decode>
Record RecordStore::load(const QString &name, Decode decode, const Record &fallback)
{
    const auto bytes = m_files.read(name);
    if (bytes.ok() && !bytes.value())
        return fallback;
    Result<Record> record = bytes.ok() ? decode(*bytes.value()) : Result<Record>(bytes.failure());
    if (record.ok())
        return record.take();
    qCWarning(lcStudy).noquote() << name << "could not be loaded and is kept:" << record.reason();
    m_notDecoded.insert(name);
    return fallback;
}

/// Whether a file that could not be read was taken away since, by its owner, or never was there.
bool RecordStore::isGone(const QString &name)
{
    const auto present = m_files.read(name);
    return present.ok() && !present.value();
}

template <typename Decode>
Result<> RecordStore::save(const QString &name, const QByteArray &bytes, Decode decode, const QDateTime &now)
{
    const auto decodes = [decode](const QByteArray &present) { return decode(present).ok(); };
    if (!m_notDecoded.contains(name) &&
        m_copies.keepBefore(name, decodes, now) == RollingCopies::Present::IsUnreadable) {
        qCWarning(lcStudy).noquote() << name << "can no longer be read";
        m_notDecoded.insert(name);
    }
    if (m_notDecoded.contains(name) && isGone(name))
        m_notDecoded.remove(name);
    if (m_notDecoded.contains(name)) {
        const auto aside = u"%1.unreadable-%2"_s.arg(name, fileNameTime(now));
        if (const auto kept = m_files.keepAside(name, aside); !kept.ok())
            return kept;
        qCWarning(lcStudy).noquote() << name << "could not be loaded; its old content is now" << aside;
        m_notDecoded.remove(name);
    }
    return m_files.write(name, bytes);
}
