#include "fileSteps.h"

#include "FileCalls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace FileSteps {

namespace {

/// Makes a system call again for as long as signals interrupt it.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

int readAll(FileCalls &calls, int file, QByteArray &bytes)
{
    struct stat status = {};
    if (calls.fstat(file, &status) < 0)
        return errno;
    if (S_ISDIR(status.st_mode))
        return EISDIR;
    if (!S_ISREG(status.st_mode))
        return EOPNOTSUPP;
    if (status.st_size > longestFile)
        return EFBIG;

    // One byte more than the size, so that an unchanged file needs no second buffer to meet its end.
    qint64 length = 0;
    bytes.resize(status.st_size + 1);
    while (true) {
        if (length == bytes.size())
            bytes.resize(bytes.size() * 2);
        char *const end = bytes.data() + length;
        const auto room = std::size_t(bytes.size() - length);
        const ssize_t got = uninterrupted([&] { return calls.read(file, end, room); });
        if (got < 0)
            return errno;
        if (got == 0)
            break;
        length += got;
        if (length > longestFile) // it grew while it was read
            return EFBIG;
    }
    bytes.truncate(length);
    return 0;
}

} // namespace

Failure failure(int error)
{
    return Failure{QString::fromLocal8Bit(std::strerror(error))};
}

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

int open(FileCalls &calls, const QByteArray &path, int flags, int &file)
{
    file = uninterrupted([&] { return calls.open(path.constData(), flags | O_CLOEXEC, 0600); });
    return file < 0 ? errno : 0;
}

int writeAll(FileCalls &calls, int file, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t taken = uninterrupted(
            [&] { return calls.write(file, bytes.constData() + done, std::size_t(bytes.size() - done)); });
        if (taken < 0)
            return errno;
        if (taken == 0) // would go on for ever
            return EIO;
        done += taken;
    }
    return 0;
}

int sync(FileCalls &calls, int file)
{
    return uninterrupted([&] { return calls.fsync(file); }) < 0 ? errno : 0;
}

namespace {

int writeNewFile(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    int file = -1;
    if (const int error = open(calls, path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, file))
        return error;
    int error = writeAll(calls, file, bytes);
    if (!error)
        error = sync(calls, file);
    // A network file system may tell only here that it could not store the bytes. After EINTR the file is
    // closed and was synced.
    if (calls.close(file) < 0 && errno != EINTR && !error)
        error = errno;
    return error;
}

} // namespace

int writeBeside(FileCalls &calls, const QByteArray &path, const QByteArray &bytes, QByteArray &beside)
{
    beside = folderOf(path) + "/." + path.mid(path.lastIndexOf('/') + 1) + ".new";
    calls.unlink(beside.constData()); // what a crash left; where it stays, the next step says why
    const int error = writeNewFile(calls, beside, bytes);
    if (error)
        calls.unlink(beside.constData());
    return error;
}

int replace(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    QByteArray beside;
    if (const int error = writeBeside(calls, path, bytes, beside))
        return error;
    if (calls.rename(beside.constData(), path.constData()) == 0)
        return 0;
    const int error = errno;
    calls.unlink(beside.constData());
    return error;
}

int syncFolder(FileCalls &calls, const QByteArray &folder)
{
    int file = -1;
    if (const int error = open(calls, folder, O_RDONLY | O_DIRECTORY, file))
        return error;
    const int error = sync(calls, file);
    calls.close(file); // nothing was written through it
    return error == EINVAL || error == EOPNOTSUPP ? 0 : error;
}

int createFolder(FileCalls &calls, const QByteArray &folder, std::vector<QByteArray> &grown)
{
    // A parent that stands is never made again; what stands and is no folder fails the step that follows.
    const auto make = [&] { return calls.mkdir(folder.constData(), 0700) < 0 ? errno : 0; };
    int error = make();
    const QByteArray parent = folderOf(folder);
    if (error == ENOENT && parent != folder) {
        if (const int parentError = createFolder(calls, parent, grown))
            return parentError;
        error = make();
    }
    if (error == EEXIST || error == EISDIR)
        return 0;
    if (!error)
        grown.push_back(parent);
    return error;
}

int createDurableFolder(FileCalls &calls, const QByteArray &folder)
{
    std::vector<QByteArray> grown;
    if (const int error = createFolder(calls, folder, grown))
        return error;
    for (const QByteArray &parent : grown) {
        if (const int error = syncFolder(calls, parent))
            return error;
    }
    return 0;
}

int followLinks(FileCalls &calls, QByteArray &path)
{
    constexpr int mostLinks = 40; // as many as Linux itself follows
    for (int i = 0; i < mostLinks; ++i) {
        char target[4096]; // longer ones do not exist: PATH_MAX
        const ssize_t length = calls.readlink(path.constData(), target, sizeof target);
        if (length < 0)
            return errno == EINVAL || errno == ENOENT ? 0 : errno; // no link, or nothing there yet
        const QByteArray next(target, length);
        path = next.startsWith('/') ? next : folderOf(path) + '/' + next;
    }
    return ELOOP;
}

Result<std::optional<QByteArray>> read(FileCalls &calls, const QByteArray &path)
{
    int file = -1;
    // Without O_NONBLOCK a named pipe would keep the program waiting for a writer.
    const int openError = open(calls, path, O_RDONLY | O_NONBLOCK, file);
    if (openError == ENOENT || openError == ENOTDIR)
        return std::optional<QByteArray>();
    if (openError)
        return failure(openError);

    QByteArray bytes;
    const int error = readAll(calls, file, bytes);
    calls.close(file); // nothing was written through it
    if (error)
        return failure(error);
    return std::optional(bytes);
}

int list(FileCalls &calls, const QByteArray &folder, std::vector<Entry> &entries)
{
    DIR *const opened = calls.opendir(folder.constData());
    if (!opened)
        return errno == ENOENT ? 0 : errno;
    int error = 0;
    while (const dirent *const entry = calls.readdir(opened)) {
        const QByteArray name = entry->d_name;
        struct stat status = {};
        if (calls.lstat(QByteArray(folder + '/' + name).constData(), &status) == 0) {
            if (S_ISREG(status.st_mode))
                entries.push_back({name, status.st_size});
        } else if (errno != ENOENT) { // it may have gone since
            error = errno;
            break;
        }
    }
    if (!error)
        error = errno;
    calls.closedir(opened); // nothing was written through it
    return error;
}

} // namespace FileSteps
