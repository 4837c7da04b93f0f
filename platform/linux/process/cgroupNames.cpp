#include "cgroupNames.h"

namespace {

/// Resolves systemd's "\xHH" escapes: "org.a\x2db" is "org.a-b".
QString unescapedUnitName(QByteArray name)
{
    for (auto at = name.indexOf("\\x"); at >= 0; at = name.indexOf("\\x", at + 1)) {
        bool ok = false;
        const auto code = name.mid(at + 2, 2).toInt(&ok, 16);
        if (ok && code > 0 && name.size() >= at + 4)
            name.replace(at, 4, QByteArray(1, char(code)));
    }
    return QString::fromUtf8(name);
}

/// What stands between "app-" and the random part of a scope or the instance of a service; else empty.
QByteArray launcherAndId(const QByteArray &unit)
{
    if (!unit.startsWith("app-"))
        return {};
    if (unit.endsWith(".scope"))
        return unit.first(qMax(unit.lastIndexOf('-'), qsizetype(4))).sliced(4);
    if (!unit.endsWith(".service"))
        return {};
    const auto name = unit.chopped(qsizetype(sizeof(".service") - 1));
    const auto instance = name.indexOf('@');
    return (instance < 0 ? name : name.first(instance)).sliced(4);
}

QStringList possibleIds(const QByteArray &launcherAndId)
{
    if (launcherAndId.isEmpty())
        return {};
    // An id's own dashes should be written \x2d, so that a plain one ends the launcher's name; not every
    // launcher does, so the whole is tried first.
    QStringList ids{unescapedUnitName(launcherAndId)};
    const auto dash = launcherAndId.indexOf('-');
    if (dash >= 0 && dash + 1 < launcherAndId.size())
        ids << unescapedUnitName(launcherAndId.sliced(dash + 1));
    return ids;
}

} // namespace

CgroupApplication cgroupApplication(const QByteArray &text)
{
    CgroupApplication found;
    for (const auto &line : text.split('\n')) {
        const auto path = line.sliced(line.indexOf(':', line.indexOf(':') + 1) + 1).trimmed();
        for (const auto &part : path.split('/')) {
            if (part.startsWith("snap.") && (part.endsWith(".scope") || part.endsWith(".service")))
                found.snapName = QString::fromUtf8(part.split('.').value(1));
            const auto ids = possibleIds(launcherAndId(part));
            if (!ids.isEmpty()) {
                found.desktopIds = ids;
                found.unit = QString::fromUtf8(path.first(path.indexOf(part) + part.size()));
            }
        }
    }
    return found;
}
