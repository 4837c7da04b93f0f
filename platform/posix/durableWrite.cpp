#include "durableWrite.h"

#include "FileCalls.h"
#include "fileSteps.h"

#include <cerrno>
#include <fcntl.h>

namespace {

int createDurableFolder(FileCalls &calls, const QByteArray &folder)
{
    std::vector<QByteArray> grown;
    if (const int error = FileSteps::createFolder(calls, folder, grown))
        return error;
    for (const QByteArray &parent : grown) {
        if (const int error = FileSteps::syncFolder(calls, parent))
            return error;
    }
    return 0;
}

int writeNewFile(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    int file = -1;
    if (const int error = FileSteps::open(calls, path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, file))
        return error;
    int error = FileSteps::writeAll(calls, file, bytes);
    if (!error)
        error = FileSteps::sync(calls, file);
    // A network file system may tell only here that it could not store the bytes. After EINTR the file is
    // closed and was synced.
    if (calls.close(file) < 0 && errno != EINTR && !error)
        error = errno;
    return error;
}

} // namespace

Result<> durableWrite(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    if (const int error = createDurableFolder(calls, FileSteps::folderOf(path)))
        return FileSteps::failure(error);
    QByteArray target = path;
    if (const int error = FileSteps::followLinks(calls, target))
        return FileSteps::failure(error);

    const QByteArray folder = FileSteps::folderOf(target);
    const QByteArray temporary = folder + "/." + target.mid(target.lastIndexOf('/') + 1) + ".new";
    calls.unlink(temporary.constData()); // what a crash left; where it stays, the next step says why
    int error = writeNewFile(calls, temporary, bytes);
    if (!error && calls.rename(temporary.constData(), target.constData()) < 0)
        error = errno;
    if (error) {
        calls.unlink(temporary.constData());
        return FileSteps::failure(error);
    }
    error = FileSteps::syncFolder(calls, folder);
    if (error)
        return FileSteps::failure(error);
    return Done{};
}
