#pragma once

#include "FileCalls.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <limits>
#include <map>

/// The real system calls, except that those fail which the test names. Remembers every call.
class FailingFileCalls : public FileCalls
{
public:
    QList<QByteArray> steps;            ///< the names of the calls, in order
    qsizetype failingStep = -1;         ///< this call, counted from 0, fails with `error`
    int error = EIO;                    ///< the errno of the failing step
    std::map<QByteArray, int> failures; ///< the errno with which every call of a name fails
    std::size_t longestWrite = std::numeric_limits<std::size_t>::max(); ///< bytes that one write() takes
    qint64 written = 0;                                                 ///< bytes in all
    std::function<void(qsizetype step)>
        beforeStep; ///< is told of every call before it is made, where it is set

    int open(const char *path, int flags, mode_t mode) override
    {
        return fails("open") ? -1 : FileCalls::open(path, flags, mode);
    }
    int close(int file) override
    {
        FileCalls::close(file); // the system closes it even where it reports an error
        return fails("close") ? -1 : 0;
    }
    ssize_t read(int file, void *buffer, std::size_t size) override
    {
        return fails("read") ? -1 : FileCalls::read(file, buffer, size);
    }
    ssize_t write(int file, const void *bytes, std::size_t size) override
    {
        if (fails("write"))
            return -1;
        const ssize_t taken = FileCalls::write(file, bytes, std::min(size, longestWrite));
        written += std::max(taken, ssize_t(0));
        return taken;
    }
    /// Counted, not made: no test cuts the power, and a busy disk would take seconds.
    int fsync(int) override { return fails("fsync") ? -1 : 0; }
    int ftruncate(int file, off_t length) override
    {
        return fails("ftruncate") ? -1 : FileCalls::ftruncate(file, length);
    }
    int fstat(int file, struct stat *status) override
    {
        return fails("fstat") ? -1 : FileCalls::fstat(file, status);
    }
    int lstat(const char *path, struct stat *status) override
    {
        return fails("lstat") ? -1 : FileCalls::lstat(path, status);
    }
    int rename(const char *from, const char *to) override
    {
        return fails("rename") ? -1 : FileCalls::rename(from, to);
    }
    int link(const char *from, const char *to) override
    {
        return fails("link") ? -1 : FileCalls::link(from, to);
    }
    int unlink(const char *path) override { return fails("unlink") ? -1 : FileCalls::unlink(path); }
    int mkdir(const char *path, mode_t mode) override
    {
        return fails("mkdir") ? -1 : FileCalls::mkdir(path, mode);
    }
    ssize_t readlink(const char *path, char *buffer, std::size_t size) override
    {
        return fails("readlink") ? -1 : FileCalls::readlink(path, buffer, size);
    }
    DIR *opendir(const char *path) override { return fails("opendir") ? nullptr : FileCalls::opendir(path); }
    dirent *readdir(DIR *folder) override { return fails("readdir") ? nullptr : FileCalls::readdir(folder); }
    int closedir(DIR *folder) override
    {
        FileCalls::closedir(folder);
        return fails("closedir") ? -1 : 0;
    }

private:
    bool fails(const char *name)
    {
        steps.push_back(name);
        if (beforeStep)
            beforeStep(steps.size() - 1);
        const auto named = failures.find(name);
        const bool now = steps.size() - 1 == failingStep;
        if (now || named != failures.end())
            errno = now ? error : named->second;
        return now || named != failures.end();
    }
};
