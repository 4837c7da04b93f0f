#include "durableWrite.h"

#include "FileCalls.h"
#include "fileSteps.h"

namespace {

int createDurableFolder(FileCalls &calls, const QByteArray &folder)
{
    std::vector<QByteArray> grown;
    if (const int error = FileSteps::createFolder(calls, folder, grown))
        return error;
    for (const QByteArray &parent : grown) {
        if (const int error = FileSteps::syncFolder(calls, parent))
            return error;
    }
    return 0;
}

} // namespace

Result<> durableWrite(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    if (const int error = createDurableFolder(calls, FileSteps::folderOf(path)))
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
