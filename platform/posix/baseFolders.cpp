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

QString homeFolder()
{
    const QString home = QFile::decodeName(qgetenv("HOME"));
    return home.startsWith(u'/') ? home : homeOfUserDatabase();
}

QString withoutLastSlashes(QString path)
{
    while (path.endsWith(u'/'))
        path.chop(1);
    return path;
}

/// The folder `name` in the base folder that `variable` names, by default `underHome` (begins with "/").
/// ".." is left to the file system, which alone knows where symbolic links lead.
QString folderIn(const char *variable, const QString &underHome, const QString &name)
{
    const QString named = QFile::decodeName(qgetenv(variable));
    const QString base =
        named.startsWith(u'/') ? withoutLastSlashes(named) : withoutLastSlashes(homeFolder()) + underHome;
    return base + u'/' + name;
}

} // namespace

QString dataFolder()
{
    return folderIn("XDG_DATA_HOME", u"/.local/share"_s, u"Quorvel"_s);
}

QString preferencesFolder()
{
    return folderIn("XDG_CONFIG_HOME", u"/.config"_s, u"quorvel"_s);
}
