#include "privateFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

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

struct Problem
{
    std::string english, russian;
};

Problem ofTheSystem(int error)
{
    return {strerror(error), strerror(error)};
}

Problem problemOf(const std::string &path)
{
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
        return ofTheSystem(errno);
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
        return ofTheSystem(errno);
    if (S_ISLNK(status.st_mode))
        return {"it is a symbolic link.", "это символическая ссылка."};
    if (!S_ISDIR(status.st_mode))
        return {"it is not a folder.", "это не папка."};
    if (status.st_uid != geteuid())
        return {"it belongs to another user.", "она принадлежит другому пользователю."};
    if ((status.st_mode & 0077) != 0)
        return {"other users have access to it.", "к ней есть доступ у других пользователей."};
    return {};
}

} // namespace

PrivateFolder privateFolder()
{
    const auto path = folderPath();
    auto problem = problemOf(path);
    return {path, std::move(problem.english), std::move(problem.russian)};
}
