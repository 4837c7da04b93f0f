#pragma once

#include "FileCalls.h"
#include "RecordFiles.h"

/// Record files as plain files of one folder, for this user alone: the folder has mode 0700, the files 0600.
/// A file may be a symbolic link into another folder, a synced one say; it is read and written through.
/// Failures carry the system's own description. keepAside() takes "ASIDE-2", "ASIDE-3"... where the name is
/// taken. Names are plain file names, or FOLDER/NAME.
class FolderRecordFiles : public RecordFiles
{
public:
    /// `folder` is an absolute path; it need not exist. `calls` outlives this object.
    explicit FolderRecordFiles(const QString &folder, FileCalls &calls = FileCalls::system());

    Result<std::optional<QByteArray>> read(const QString &name) override;
    Result<> write(const QString &name, const QByteArray &bytes) override;
    Result<> keepAside(const QString &name, const QString &asideName) override;
    Result<std::vector<ListedFile>> list(const QString &folder) override;
    Result<> remove(const QString &name) override;

private:
    QByteArray pathOf(const QString &name) const;

    QByteArray m_folder;
    FileCalls &m_calls;
};
