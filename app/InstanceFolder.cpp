#include "InstanceFolder.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool isFolder(const QByteArray &path)
{
    struct stat status;
    return stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

QByteArray folderPath()
{
    const auto runtimeFolder = qgetenv("XDG_RUNTIME_DIR");
    if (runtimeFolder.startsWith('/') && isFolder(runtimeFolder))
        return runtimeFolder + "/quorvel";
    return "/tmp/quorvel-" + QByteArray::number(geteuid());
}

Failure refused(const QByteArray &path, const QString &why)
{
    return {u"The folder \"%1\" cannot be used: %2"_s.arg(QFile::decodeName(path), why)};
}

} // namespace

Result<QByteArray> instanceFolder()
{
    const auto path = folderPath();
    if (mkdir(path.constData(), 0700) != 0 && errno != EEXIST)
        return refused(path, QString::fromLocal8Bit(strerror(errno)));
    struct stat status;
    if (lstat(path.constData(), &status) != 0)
        return refused(path, QString::fromLocal8Bit(strerror(errno)));
    if (S_ISLNK(status.st_mode))
        return refused(path, u"it is a symbolic link."_s);
    if (!S_ISDIR(status.st_mode))
        return refused(path, u"it is not a folder."_s);
    if (status.st_uid != geteuid())
        return refused(path, u"it belongs to another user."_s);
    if ((status.st_mode & 0077) != 0)
        return refused(path, u"other users have access to it."_s);
    return path;
}
