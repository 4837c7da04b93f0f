#pragma once

#include "Result.h"

#include <QString>

/// Keeps two programs of one user from writing the same records. Starts of one login find each other as
/// SingleInstance says; this is for two logins, on the desktop and by ssh say, that have a runtime folder
/// each. What is locked is the folder above the data folder, which is usually there when the data folder is
/// not, so that nothing has to be created. The lock goes with its process.
class DataFolderLock
{
public:
    /// Takes the lock of the folder that `dataFolder`, an absolute path, lies in.
    explicit DataFolderLock(const QString &dataFolder);
    ~DataFolderLock();
    Q_DISABLE_COPY_MOVE(DataFolderLock)

    /// A failure, in words for the user, where another program has the lock. No failure where it cannot be
    /// had for another reason, as on a file system without locks or in a folder of somebody else: the program
    /// then runs as it would without.
    Result<> taken() const;

private:
    int m_folder = -1;
    bool m_elsewhere = false;
};
