#pragma once

#include "Result.h"

#include <QByteArray>

class FileCalls;

/// Keeps the present bytes of the file at `path` durably under `aside` too, or, where that name is taken,
/// under the first free one of "ASIDE-2", "ASIDE-3"...; never replaces a file. Paths are in the file system's
/// encoding. Returns the path under which the bytes are kept.
///
/// The second name is a hard link, so that even a file that cannot be read is kept; where the file system
/// has none, or the file is on another one behind a symbolic link, it is a copy, made as ".NAME.new" in the
/// folder of `aside` and renamed once it is whole. After a failure nothing new is left behind. Only one
/// process may keep files in a folder at a time.
Result<QByteArray> keepAside(FileCalls &calls, const QByteArray &path, const QByteArray &aside);
