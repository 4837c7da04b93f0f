#include "RecordStore.h"

#include "jsonCodecs.h"

#include <QLoggingCategory>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcStudy, "quorvel.study")

namespace {

QString configName()
{
    return u"config.json"_s;
}

QString studyTasksName()
{
    return u"study-tasks.json"_s;
}

QString studyCardsName()
{
    return u"study-cards.json"_s;
}

QString progressName()
{
    return u"progress.json"_s;
}

} // namespace

RecordStore::RecordStore(RecordFiles &files)
    : m_files(files)
{}

QuorvelConfig RecordStore::loadConfig()
{
    return load(configName(), decodeConfig, QuorvelConfig::defaults());
}

std::deque<StudyTask> RecordStore::loadStudyTasks()
{
    return load(studyTasksName(), decodeStudyTasks, std::deque<StudyTask>());
}

std::deque<StudyCard> RecordStore::loadStudyCards()
{
    return load(studyCardsName(), decodeStudyCards, std::deque<StudyCard>());
}

UserProgress RecordStore::loadUserProgress()
{
    return load(progressName(), decodeUserProgress, UserProgress());
}

Result<> RecordStore::saveConfig(const QuorvelConfig &config, const QDateTime &now)
{
    return save(configName(), encodeConfig(config), now);
}

Result<> RecordStore::saveStudyTasks(const std::deque<StudyTask> &tasks, const QDateTime &now)
{
    return save(studyTasksName(), encodeStudyTasks(tasks), now);
}

Result<> RecordStore::saveStudyCards(const std::deque<StudyCard> &cards, const QDateTime &now)
{
    return save(studyCardsName(), encodeStudyCards(cards), now);
}

Result<> RecordStore::saveUserProgress(const UserProgress &progress, const QDateTime &now)
{
    return save(progressName(), encodeUserProgress(progress), now);
}

template <typename Record, typename Decode>
Record RecordStore::load(const QString &name, Decode decode, const Record &fallback)
{
    const auto bytes = m_files.read(name);
    if (bytes.ok() && !bytes.value())
        return fallback;
    const Result<Record> record = bytes.ok() ? decode(*bytes.value()) : Result<Record>(bytes.failure());
    if (record.ok())
        return record.value();
    qCWarning(lcStudy).noquote() << name << "could not be loaded and is kept:" << record.reason();
    m_notDecoded.insert(name);
    return fallback;
}

Result<> RecordStore::save(const QString &name, const QByteArray &bytes, const QDateTime &now)
{
    if (m_notDecoded.contains(name)) {
        const auto aside = u"%1.unreadable-%2"_s.arg(name, now.toUTC().toString(u"yyyyMMdd'T'HHmmss'Z'"_s));
        if (const auto kept = m_files.keepAside(name, aside); !kept.ok())
            return kept;
        qCWarning(lcStudy).noquote() << name << "could not be loaded; its old content is now" << aside;
        m_notDecoded.remove(name);
    }
    return m_files.write(name, bytes);
}
