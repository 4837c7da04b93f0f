#pragma once

#include "Result.h"

#include <QByteArray>

class FileCalls;

/// Replaces the file at `path` (in the file system's encoding) with `bytes`, at once and durably: whenever
/// the program or the machine stops, the old or the new bytes are there, and after a success the new ones.
/// After a failure either may be there. The file gets mode 0600; missing folders are made with mode 0700.
///
/// Where `path` is a symbolic link, the file it leads to is replaced and the link stays; a missing folder
/// behind a link is not made, for it may be a drive that is not there at the moment.
///
/// The bytes are first written to ".NAME.new" in the same folder. It is removed after a failure; one that a
/// crash left behind goes with the next write. Only one process may write a file at a time.
Result<> durableWrite(FileCalls &calls, const QByteArray &path, const QByteArray &bytes);
