#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstring>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

/// Small steps that the tests of this folder share.
namespace TestFiles {

inline QByteArray native(const QString &path)
{
    return QFile::encodeName(path);
}

inline QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<cannot be read>");
}

inline void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("the test cannot write its own file");
}

/// The permission bits, or -1 where there is no such file.
inline int mode(const QString &path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) < 0 ? -1 : int(status.st_mode & 07777);
}

inline void symbolicLink(const QString &target, const QString &path)
{
    if (::symlink(QFile::encodeName(target).constData(), QFile::encodeName(path).constData()) < 0)
        qFatal("the test cannot make its symbolic link");
}

/// Everything in a folder, hidden files too, by name.
inline QStringList names(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

inline QString description(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// Runs `steps` as a user whom file modes bind, in a process of its own where this one is root. The folder is
/// that user's then. Returns what `steps` returns, 0 to 127.
template <typename Steps>
int asOrdinaryUser(const QString &folder, Steps steps)
{
    if (::geteuid() != 0)
        return steps();
    constexpr uid_t nobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chown(QFile::encodeName(folder).constData(), nobody, nobody) < 0 || ::setgid(nobody) < 0 ||
            ::setuid(nobody) < 0)
            ::_exit(126);
        ::_exit(steps());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 125;
}

} // namespace TestFiles
