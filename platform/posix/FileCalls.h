#pragma once

#include <cstddef>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

/// The system calls on files that the adapters of this folder make, each as its manual page has it: -1 and
/// `errno` where it fails. A class of its own so that a test can let any of them fail.
class FileCalls
{
public:
    virtual ~FileCalls() = default;

    /// The calls of the running system.
    static FileCalls &system();

    virtual int open(const char *path, int flags, mode_t mode);
    virtual int close(int file);
    virtual ssize_t read(int file, void *buffer, std::size_t size);
    virtual ssize_t write(int file, const void *bytes, std::size_t size);
    virtual int fsync(int file);
    virtual int ftruncate(int file, off_t length);
    virtual int fstat(int file, struct stat *status);
    virtual int lstat(const char *path, struct stat *status);
    virtual int rename(const char *from, const char *to);
    virtual int link(const char *from, const char *to);
    virtual int unlink(const char *path);
    virtual int mkdir(const char *path, mode_t mode);
    virtual ssize_t readlink(const char *path, char *buffer, std::size_t size);
    virtual DIR *opendir(const char *path);
    /// Null at the end too: `errno` is set to 0 before.
    virtual dirent *readdir(DIR *folder);
    virtual int closedir(DIR *folder);
};
