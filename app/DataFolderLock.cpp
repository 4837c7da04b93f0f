#include "DataFolderLock.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcDataFolder, "quorvel.app.data")

namespace {

/// Opens a folder of this user; -1 for any other.
int openOwnFolder(const QByteArray &path)
{
    const int folder = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return -1;
    struct stat status = {};
    if (fstat(folder, &status) == 0 && status.st_uid == geteuid())
        return folder;
    ::close(folder); // other users lock it too
    return -1;
}

} // namespace

DataFolderLock::DataFolderLock(const QString &dataFolder)
{
    const auto above = QFileInfo(dataFolder).path();
    m_folder = openOwnFolder(QFile::encodeName(above));
    if (m_folder < 0 || flock(m_folder, LOCK_EX | LOCK_NB) == 0)
        return;
    m_elsewhere = errno == EWOULDBLOCK;
    if (!m_elsewhere)
        qCInfo(lcDataFolder) << "the data folder cannot be locked:" << strerror(errno);
}

DataFolderLock::~DataFolderLock()
{
    if (m_folder >= 0)
        ::close(m_folder);
}

Result<> DataFolderLock::taken() const
{
    if (m_elsewhere)
        return Failure{u"Quorvel is already running in another login of yours. Quit it there first.\n"
                       u"Quorvel уже запущен в другом твоём сеансе. Сначала заверши его там."_s};
    return Done{};
}
