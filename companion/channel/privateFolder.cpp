#include "privateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isFolder(const std::string &path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string folderPath()
{
    const char *given = std::getenv("XDG_RUNTIME_DIR");
    const std::string runtimeFolder = given ? given : "";
    if (runtimeFolder.starts_with('/') && isFolder(runtimeFolder))
        return runtimeFolder + "/quorvel";
    return "/tmp/quorvel-" + std::to_string(geteuid());
}

std::string problemOf(const std::string &path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        return strerror(errno);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
        return strerror(errno);
    if (S_ISLNK(status.st_mode))
        return "it is a symbolic link.";
    if (!S_ISDIR(status.st_mode))
        return "it is not a folder.";
    if (status.st_uid != geteuid())
        return "it belongs to another user.";
    if ((status.st_mode & 0077) != 0)
        return "other users have access to it.";
    return {};
}

} // namespace

PrivateFolder privateFolder()
{
    const auto path = folderPath();
    return {path, problemOf(path)};
}
