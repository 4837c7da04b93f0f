#pragma once

#include "Result.h"

#include <QByteArray>

#include <optional>
#include <vector>

class FileCalls;

/// The steps that reading, replacing and keeping a file are made of. Paths are in the file system's encoding
/// (`QFile::encodeName`). A function that returns an `int` returns the `errno` of the call that failed, or 0.
namespace FileSteps {

/// No file of this program is longer; reading a longer one fails.
inline constexpr qint64 longestFile = qint64(1) << 30; // 1 GiB

/// The failure with the system's own description of `error`.
Failure failure(int error);

/// The folder part of a path: "/" for a file of the root, "." for a bare name.
QByteArray folderOf(const QByteArray &path);

/// Opens as open(2) does, close-on-exec, again where a signal interrupted it. Sets `file`.
int open(FileCalls &calls, const QByteArray &path, int flags, int &file);

/// Writes all bytes, however few the system takes at a time.
int writeAll(FileCalls &calls, int file, const QByteArray &bytes);

/// Waits until the file's bytes are on the disk.
int sync(FileCalls &calls, int file);

/// Writes the bytes beside `path`, waits until they are on the disk, and gives the file that name: either the
/// old or the new bytes are there. A link of that name is replaced, not followed. The folder has to be there;
/// it holds the new name durably only after syncFolder().
int replace(FileCalls &calls, const QByteArray &path, const QByteArray &bytes);

/// Waits until the names in a folder are on the disk. No failure where the file system cannot sync folders.
int syncFolder(FileCalls &calls, const QByteArray &folder);

/// Creates a folder (mode 0700) and its missing parents. Appends to `grown` each folder that got a new name
/// in it: they hold it durably only after syncFolder().
int createFolder(FileCalls &calls, const QByteArray &folder, std::vector<QByteArray> &grown);

/// As createFolder(), and all of it is on the disk.
int createDurableFolder(FileCalls &calls, const QByteArray &folder);

/// Writes the bytes to a new file beside the place where they go, ".NAME.new", and waits until they are on
/// the disk. What a crash left under that name is removed; after a failure nothing is left there.
int writeBeside(FileCalls &calls, const QByteArray &path, const QByteArray &bytes, QByteArray &beside);

/// Follows `path` through symbolic links to the path of the file itself, which need not exist.
int followLinks(FileCalls &calls, QByteArray &path);

/// The whole file, following links; no bytes where there is none; a failure where it cannot be read, is
/// longer than `longestFile` or is no regular file (a folder, a pipe, a device).
Result<std::optional<QByteArray>> read(FileCalls &calls, const QByteArray &path);

/// The plain files of a folder, in no order; none where there is no such folder.
struct Entry
{
    QByteArray name;
    qint64 size; ///< bytes
};
int list(FileCalls &calls, const QByteArray &folder, std::vector<Entry> &entries);

} // namespace FileSteps
