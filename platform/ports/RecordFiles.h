#pragma once

#include "Result.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

/// A plain file as a folder lists it.
struct ListedFile
{
    QString name; ///< without the folder
    qint64 size;  ///< bytes

    bool operator==(const ListedFile &) const = default;
};

/// The files of the program's data folder, by name; "FOLDER/NAME" is one of a folder in it. Nothing is
/// created before the first write.
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

    /// Keeps the file's present bytes under `asideName` too; never replaces a file of that name. At no moment
    /// are there fewer bytes under it. Creates the folder of `asideName` where it is missing.
    virtual Result<> keepAside(const QString &name, const QString &asideName) = 0;

    /// The plain files of a folder in the data folder, in no order; none where there is no such folder.
    /// Links, folders and the like are left out.
    virtual Result<std::vector<ListedFile>> list(const QString &folder) = 0;

    /// Removes a file. No failure where there is none.
    virtual Result<> remove(const QString &name) = 0;
};
