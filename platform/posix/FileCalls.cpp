#include "FileCalls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

FileCalls &FileCalls::system()
{
    static FileCalls calls;
    return calls;
}

int FileCalls::open(const char *path, int flags, mode_t mode)
{
    return ::open(path, flags, mode);
}

int FileCalls::close(int file)
{
    return ::close(file);
}

ssize_t FileCalls::read(int file, void *buffer, std::size_t size)
{
    return ::read(file, buffer, size);
}

ssize_t FileCalls::write(int file, const void *bytes, std::size_t size)
{
    return ::write(file, bytes, size);
}

int FileCalls::fsync(int file)
{
    return ::fsync(file);
}

int FileCalls::ftruncate(int file, off_t length)
{
    return ::ftruncate(file, length);
}

int FileCalls::fstat(int file, struct stat *status)
{
    return ::fstat(file, status);
}

int FileCalls::lstat(const char *path, struct stat *status)
{
    return ::lstat(path, status);
}

int FileCalls::rename(const char *from, const char *to)
{
    return ::rename(from, to);
}

int FileCalls::link(const char *from, const char *to)
{
    return ::link(from, to);
}

int FileCalls::unlink(const char *path)
{
    return ::unlink(path);
}

int FileCalls::mkdir(const char *path, mode_t mode)
{
    return ::mkdir(path, mode);
}

ssize_t FileCalls::readlink(const char *path, char *buffer, std::size_t size)
{
    return ::readlink(path, buffer, size);
}

DIR *FileCalls::opendir(const char *path)
{
    return ::opendir(path);
}

dirent *FileCalls::readdir(DIR *folder)
{
    errno = 0;
    return ::readdir(folder);
}

int FileCalls::closedir(DIR *folder)
{
    return ::closedir(folder);
}
