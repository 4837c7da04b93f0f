#include "RollingCopies.h"

#include "recordTime.h"
#include "studyLog.h"

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 secondsBetweenCopies = 60 * 60;
constexpr qint64 secondsBetweenListings = 60 * 60;
constexpr qint64 secondsAfterFailure = 5 * 60;

QString folder()
{
    return u"backups"_s;
}

QString pathOf(const QString &copy)
{
    return folder() + u'/' + copy;
}

/// Whether `seconds` have gone by. A clock that was set back does not stop what is to come.
bool isOver(const QDateTime &since, qint64 seconds, const QDateTime &now)
{
    const qint64 gone = since.secsTo(now);
    return gone < 0 || gone >= seconds;
}

} // namespace

RollingCopies::RollingCopies(RecordFiles &files)
    : m_files(files)
{}

RollingCopies::Present RollingCopies::keepBefore(const QString &recordFile, const Decodes &decodes,
                                                 const QDateTime &now)
{
    if (!isDue(recordFile, now))
        return Present::MayBeReplaced;
    const auto present = m_files.read(recordFile);
    if (present.ok() && !present.value())
        return Present::MayBeReplaced;
    if (!present.ok() || !decodes(*present.value()))
        return Present::IsUnreadable;
    if (!isInNewestCopy(recordFile, *present.value(), now))
        keep(recordFile, *present.value(), now);
    return Present::MayBeReplaced;
}

bool RollingCopies::isDue(const QString &recordFile, const QDateTime &now)
{
    const auto failed = m_failedAt.constFind(recordFile);
    if (failed != m_failedAt.cend() && !isOver(*failed, secondsAfterFailure, now))
        return false;
    m_failedAt.remove(recordFile);
    if (!listIfNeeded(now)) {
        m_failedAt.insert(recordFile, now);
        return false;
    }
    const auto *newest = newestCopyOf(recordFile, now);
    return !newest || newest->made.time.secsTo(now) >= secondsBetweenCopies;
}

bool RollingCopies::listIfNeeded(const QDateTime &now)
{
    if (m_listedAt && !isOver(*m_listedAt, secondsBetweenListings, now))
        return true;
    const auto listed = m_files.list(folder());
    if (!listed) {
        qCWarning(lcStudy).noquote() << "backups cannot be listed, so none is made:" << listed.reason();
        return false;
    }
    m_copies.clear();
    for (const auto &file : listed.value()) {
        if (const auto made = readRollingCopyName(file.name))
            m_copies.push_back({file, *made});
    }
    m_listedAt = now;
    return true;
}

const RollingCopies::Copy *RollingCopies::newestCopyOf(const QString &recordFile, const QDateTime &now) const
{
    const Copy *newest = nullptr;
    for (const auto &copy : m_copies) {
        const auto &made = copy.made;
        if (made.of == recordFile && made.time <= now && (!newest || newest->made.time < made.time))
            newest = &copy;
    }
    return newest;
}

bool RollingCopies::isInNewestCopy(const QString &recordFile, const QByteArray &bytes, const QDateTime &now)
{
    const auto *newest = newestCopyOf(recordFile, now);
    return newest && newest->file.size == bytes.size() && isWhole(newest->file.name, bytes);
}

bool RollingCopies::isWhole(const QString &copy, const QByteArray &bytes)
{
    const auto read = m_files.read(pathOf(copy));
    return read.ok() && read.value() && *read.value() == bytes;
}

void RollingCopies::keep(const QString &recordFile, const QByteArray &bytes, const QDateTime &now)
{
    if (bytes.size() > mostCopyBytes) {
        qCWarning(lcStudy).noquote() << recordFile << "is too large for a backup:" << bytes.size() << "bytes";
        m_failedAt.insert(recordFile, now);
        return;
    }
    const RollingCopy made{recordFile, recordTime(now)}; // the name is free, or no copy were due
    const QString copy = rollingCopyName(made.of, made.time);
    if (const auto kept = m_files.keepAside(recordFile, pathOf(copy)); !kept) {
        qCWarning(lcStudy).noquote() << "no backup of" << recordFile << "could be made:" << kept.reason();
        m_failedAt.insert(recordFile, now);
        return;
    }
    m_copies.push_back({{copy, bytes.size()}, made});
    if (isWhole(copy, bytes)) // bytes that decode
        thin(now);
    else
        qCWarning(lcStudy).noquote() << "the backup" << copy << "cannot be read back; older ones stay";
}

void RollingCopies::thin(const QDateTime &now)
{
    std::vector<ListedFile> files;
    for (const auto &copy : m_copies)
        files.push_back(copy.file);
    for (const auto &name : copiesToRemove(files, now)) {
        if (const auto removed = m_files.remove(pathOf(name)); !removed)
            qCWarning(lcStudy).noquote() << "the old backup" << name << "stays:" << removed.reason();
        else
            std::erase_if(m_copies, [&](const Copy &copy) { return copy.file.name == name; });
    }
}
