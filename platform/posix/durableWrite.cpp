#include "durableWrite.h"

#include "FileCalls.h"
#include "fileSteps.h"

Result<> durableWrite(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    if (const int error = FileSteps::createDurableFolder(calls, FileSteps::folderOf(path)))
        return FileSteps::failure(error);
    QByteArray target = path;
    if (const int error = FileSteps::followLinks(calls, target))
        return FileSteps::failure(error);

    if (const int error = FileSteps::replace(calls, target, bytes))
        return FileSteps::failure(error);
    if (const int error = FileSteps::syncFolder(calls, FileSteps::folderOf(target)))
        return FileSteps::failure(error);
    return Done{};
}
