#include "FolderRecordFiles.h"

#include "durableWrite.h"
#include "fileSteps.h"
#include "keepAside.h"

#include <QFile>

FolderRecordFiles::FolderRecordFiles(const QString &folder, FileCalls &calls)
    : m_folder(QFile::encodeName(folder))
    , m_calls(calls)
{}

Result<std::optional<QByteArray>> FolderRecordFiles::read(const QString &name)
{
    return FileSteps::read(m_calls, pathOf(name));
}

Result<> FolderRecordFiles::write(const QString &name, const QByteArray &bytes)
{
    return durableWrite(m_calls, pathOf(name), bytes);
}

Result<> FolderRecordFiles::keepAside(const QString &name, const QString &asideName)
{
    const Result<QByteArray> kept = ::keepAside(m_calls, pathOf(name), pathOf(asideName));
    if (!kept)
        return kept.failure();
    return Done{};
}

QByteArray FolderRecordFiles::pathOf(const QString &name) const
{
    Q_ASSERT(!name.isEmpty() && !name.contains(u'/'));
    return m_folder + '/' + QFile::encodeName(name);
}
