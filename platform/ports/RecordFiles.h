#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The files of the program's data folder, by name. Nothing is created before the first write.
class RecordFiles
{
public:
    virtual ~RecordFiles() = default;

    /// The whole file; no bytes where there is no such file; a failure where there is one that cannot be
    /// read.
    virtual Result<std::optional<QByteArray>> read(const QString &name) = 0;

    /// Replaces the whole file at once and durably: after a crash either the old or the new bytes are there.
    /// Creates the folder and its parents where they are missing.
    virtual Result<> write(const QString &name, const QByteArray &bytes) = 0;

    /// Keeps the file's present bytes under `asideName` too; never replaces a file of that name.
    virtual Result<> keepAside(const QString &name, const QString &asideName) = 0;
};
