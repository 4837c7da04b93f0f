#include "keepAside.h"

#include "FileCalls.h"
#include "fileSteps.h"

#include <QLoggingCategory>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

Q_LOGGING_CATEGORY(logFiles, "quorvel.platform.posix")

bool linksAreRefused(int error)
{
    // EPERM stands for file systems without links and for files of somebody else, EMLINK for one link too
    // many.
    return error == EPERM || error == EXDEV || error == EMLINK || error == ENOSYS || error == EOPNOTSUPP;
}

/// The copy gets its name once it is whole, so that whoever sees the name sees all bytes. The name has to be
/// free: rename(2) does not ask, and link(2), which does, is what was refused.
Result<> copyToNewFile(FileCalls &calls, const QByteArray &from, const QByteArray &beside,
                       const QByteArray &to)
{
    const Result<std::optional<QByteArray>> bytes = FileSteps::read(calls, from);
    if (!bytes)
        return bytes.failure();
    if (!bytes.value())
        return FileSteps::failure(ENOENT);
    QByteArray copy;
    if (const int error = FileSteps::writeBeside(calls, beside, *bytes.value(), copy))
        return FileSteps::failure(error);
    if (calls.rename(copy.constData(), to.constData()) == 0)
        return Done{};
    const int error = errno;
    calls.unlink(copy.constData());
    return FileSteps::failure(error);
}

/// Bytes that an editor wrote a moment ago may not be on the disk yet. A file that cannot be opened cannot be
/// synced; its second name is worth having all the same.
void syncBytes(FileCalls &calls, const QByteArray &path)
{
    int file = -1;
    int error = FileSteps::open(calls, path, O_RDONLY | O_NONBLOCK, file);
    if (!error) {
        error = FileSteps::sync(calls, file);
        calls.close(file);
    }
    if (error)
        qCInfo(logFiles) << "could not sync a file before keeping it aside:"
                         << FileSteps::failure(error).reason;
}

} // namespace

Result<QByteArray> keepAside(FileCalls &calls, const QByteArray &path, const QByteArray &aside)
{
    QByteArray source = path; // link(2) would make a second name of the symbolic link, not of its file
    if (const int error = FileSteps::followLinks(calls, source))
        return FileSteps::failure(error);

    // Named after the file that is kept, not after its copy: what a crash left goes with the next copy.
    const QByteArray beside = FileSteps::folderOf(aside) + '/' + path.mid(path.lastIndexOf('/') + 1);
    constexpr int mostNames = 1000;
    for (int number = 1; number <= mostNames; ++number) {
        const QByteArray kept = number == 1 ? aside : aside + '-' + QByteArray::number(number);
        const int linkError = calls.link(source.constData(), kept.constData()) < 0 ? errno : 0;
        if (linkError == EEXIST)
            continue;
        if (linkError && !linksAreRefused(linkError))
            return FileSteps::failure(linkError);
        if (linkError) {
            struct stat status = {};
            if (calls.lstat(kept.constData(), &status) == 0)
                continue;
            if (errno != ENOENT)
                return FileSteps::failure(errno);
            if (const Result<> copied = copyToNewFile(calls, source, beside, kept); !copied)
                return copied.failure();
        } else {
            syncBytes(calls, source);
        }
        if (const int error = FileSteps::syncFolder(calls, FileSteps::folderOf(kept))) {
            calls.unlink(kept.constData());
            return FileSteps::failure(error);
        }
        return kept;
    }
    return FileSteps::failure(EEXIST);
}
