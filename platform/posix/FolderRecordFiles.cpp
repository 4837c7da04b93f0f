#include "FolderRecordFiles.h"

#include "durableWrite.h"
#include "fileSteps.h"
#include "keepAside.h"

#include <QFile>

#include <cerrno>

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
    if (asideName.contains(u'/')) {
        const QByteArray folder = FileSteps::folderOf(pathOf(asideName));
        if (const int error = FileSteps::createDurableFolder(m_calls, folder))
            return FileSteps::failure(error);
    }
    const Result<QByteArray> kept = ::keepAside(m_calls, pathOf(name), pathOf(asideName));
    if (!kept)
        return kept.failure();
    return Done{};
}

Result<std::vector<ListedFile>> FolderRecordFiles::list(const QString &folder)
{
    std::vector<FileSteps::Entry> entries;
    if (const int error = FileSteps::list(m_calls, pathOf(folder), entries))
        return FileSteps::failure(error);
    std::vector<ListedFile> files;
    files.reserve(entries.size());
    for (const auto &entry : entries)
        files.push_back({QFile::decodeName(entry.name), entry.size});
    return files;
}

Result<> FolderRecordFiles::remove(const QString &name)
{
    if (m_calls.unlink(pathOf(name).constData()) < 0 && errno != ENOENT)
        return FileSteps::failure(errno);
    return Done{};
}

QByteArray FolderRecordFiles::pathOf(const QString &name) const
{
    Q_ASSERT(!name.isEmpty() && name.count(u'/') <= 1 && !name.startsWith(u'.'));
    return m_folder + '/' + QFile::encodeName(name);
}
