#include "baseFolders.h"

#include <QFile>

#include <pwd.h>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

QString homeOfUserDatabase()
{
    const long usual = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(usual > 0 ? std::size_t(usual) : 16384);
    passwd entry = {};
    passwd *found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return {};
    return QFile::decodeName(found->pw_dir);
}

QString withoutLastSlashes(QString path)
{
    while (path.endsWith(u'/'))
        path.chop(1);
    return path;
}

/// The folder that `variable` names, by default `underHome` (begins with "/"). ".." is left to the file
/// system, which alone knows where symbolic links lead.
QString folderNamed(const char *variable, const QString &underHome)
{
    const QString named = QFile::decodeName(qgetenv(variable));
    return named.startsWith(u'/') ? withoutLastSlashes(named) : homeFolder() + underHome;
}

/// The folders that `variable` lists, by default `otherwise`.
QStringList foldersNamed(const char *variable, const QStringList &otherwise)
{
    QStringList folders;
    for (const auto &folder : QFile::decodeName(qgetenv(variable)).split(u':', Qt::SkipEmptyParts)) {
        if (folder.startsWith(u'/'))
            folders << withoutLastSlashes(folder);
    }
    return folders.isEmpty() ? otherwise : folders;
}

} // namespace

QString homeFolder()
{
    const QString home = QFile::decodeName(qgetenv("HOME"));
    return withoutLastSlashes(home.startsWith(u'/') ? home : homeOfUserDatabase());
}

QString dataHome()
{
    return folderNamed("XDG_DATA_HOME", u"/.local/share"_s);
}

QStringList dataFolders()
{
    return foldersNamed("XDG_DATA_DIRS", {u"/usr/local/share"_s, u"/usr/share"_s});
}

QString configHome()
{
    return folderNamed("XDG_CONFIG_HOME", u"/.config"_s);
}

QStringList configFolders()
{
    return foldersNamed("XDG_CONFIG_DIRS", {u"/etc/xdg"_s});
}

QStringList programFolders()
{
    return foldersNamed(
        "PATH", {u"/usr/local/bin"_s, u"/usr/bin"_s, u"/bin"_s, u"/usr/local/games"_s, u"/usr/games"_s});
}

QString dataFolder()
{
    return dataHome() + u"/Quorvel"_s;
}

QString preferencesFolder()
{
    return configHome() + u"/quorvel"_s;
}
