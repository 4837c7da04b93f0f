#include "schemeHandler.h"

#include "DesktopEntry.h"
#include "FileCalls.h"
#include "baseFolders.h"
#include "durableWrite.h"
#include "fileSteps.h"
#include "keyFiles.h"

#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcSchemeHandler, "quorvel.desktop.schemehandler")

namespace {

QByteArray schemeType()
{
    return QByteArrayLiteral("x-scheme-handler/quorvel");
}

QByteArray entryGroup()
{
    return QByteArrayLiteral("Desktop Entry");
}

/// Tells our entry from one that somebody else put there.
QByteArray ownMark()
{
    return QByteArrayLiteral("X-Quorvel-WrittenAtStart");
}

QString inApplications(const QString &dataFolder, const QString &name)
{
    return dataFolder + u"/applications/"_s + name;
}

QString ownEntryPath(const SchemeHandlerPlaces &places)
{
    return inApplications(places.dataHome, QLatin1StringView(ownHandlerName));
}

Result<std::optional<QByteArray>> readFile(FileCalls &calls, const QString &path)
{
    auto bytes = FileSteps::read(calls, QFile::encodeName(path));
    if (!bytes)
        qCWarning(lcSchemeHandler) << "cannot read" << path << "-" << bytes.reason();
    return bytes;
}

/// What is there to read; what cannot be read counts as not there.
std::optional<QByteArray> content(FileCalls &calls, const QString &path)
{
    const auto bytes = readFile(calls, path);
    return bytes ? bytes.value() : std::nullopt;
}

bool write(FileCalls &calls, const QString &path, const QByteArray &bytes)
{
    const auto written = durableWrite(calls, QFile::encodeName(path), bytes);
    if (!written)
        qCWarning(lcSchemeHandler) << "cannot write" << path << "-" << written.reason();
    return bool(written);
}

QStringList allDataFolders(const SchemeHandlerPlaces &places)
{
    return QStringList{places.dataHome} + places.dataFolders;
}

/// Whether this is an entry that opens our addresses with a program that is there.
bool opensOurAddresses(const QByteArray &bytes)
{
    const auto types = keyFileValue(bytes, entryGroup(), "MimeType").value_or(QByteArray()).split(';');
    const auto entry = parseDesktopEntry(bytes, {});
    return types.contains(schemeType()) && entry && !entry->hidden && !entry->command.isEmpty() &&
           !QStandardPaths::findExecutable(entry->command.first()).isEmpty();
}

/// Whether a package has installed the program's entry. The first one of that name hides those behind it.
bool isPackaged(FileCalls &calls, const SchemeHandlerPlaces &places)
{
    for (const auto &folder : allDataFolders(places)) {
        if (const auto bytes = content(calls, inApplications(folder, u"quorvel.desktop"_s)))
            return opensOurAddresses(*bytes);
    }
    return false;
}

QByteArray ownEntry(const QString &program)
{
    // It stays out of menus: nobody has asked for a menu entry.
    return "[" + entryGroup() + "]\nType=Application\nName=Quorvel\nExec=" + execValue(program) +
           "\nNoDisplay=true\nTerminal=false\nStartupNotify=true\nMimeType=" + schemeType() + ";\n" +
           ownMark() + "=true\n";
}

bool isOurs(const QByteArray &entry)
{
    return keyFileValue(entry, entryGroup(), ownMark()).has_value();
}

/// Whether it was written.
bool bringUpToDate(FileCalls &calls, const QString &path, const QByteArray &entry)
{
    const auto there = readFile(calls, path);
    if (!there || there.value() == entry)
        return false;
    if (there.value() && !isOurs(*there.value())) {
        qCWarning(lcSchemeHandler) << path << "is not Quorvel's own and is left alone";
        return false;
    }
    return write(calls, path, entry);
}

/// Whether it was removed.
bool removeOwn(FileCalls &calls, const QString &path)
{
    const auto there = content(calls, path);
    if (!there || !isOurs(*there))
        return false;
    if (calls.unlink(QFile::encodeName(path).constData()) == 0)
        return true;
    qCWarning(lcSchemeHandler) << "cannot remove" << path << "-" << FileSteps::failure(errno).reason;
    return false;
}

/// Every file in which it may stand who opens which type of file or address.
QStringList associationFiles(const SchemeHandlerPlaces &places)
{
    QStringList names;
    for (const auto &desktop : places.desktops)
        names << desktop + u"-mimeapps.list"_s;
    names << u"mimeapps.list"_s;
    QStringList files;
    for (const auto &folder : QStringList{places.config} + places.configFolders) {
        for (const auto &name : names)
            files << folder + u'/' + name;
    }
    for (const auto &folder : allDataFolders(places)) {
        for (const auto &name : names + QStringList{u"mimeinfo.cache"_s})
            files << inApplications(folder, name);
    }
    return files;
}

/// Whether the line was added.
bool associate(FileCalls &calls, const SchemeHandlerPlaces &places)
{
    const auto files = associationFiles(places);
    const bool isDecided = std::any_of(files.begin(), files.end(), [&](const QString &path) {
        const auto bytes = content(calls, path);
        return bytes && keyFileHasKey(*bytes, schemeType());
    });
    if (isDecided)
        return false;
    const auto path = places.config + u"/mimeapps.list"_s;
    const auto there = FileSteps::read(calls, QFile::encodeName(path));
    if (!there)
        return false; // said above; its bytes must not be lost
    // The program's entry of a package takes the place of ours once that is removed.
    const auto line = schemeType() + '=' + ownHandlerName + ";quorvel.desktop;";
    return write(calls, path,
                 keyFileWithLine(there.value().value_or(QByteArray()), "Default Applications", line));
}

} // namespace

SchemeHandlerPlaces schemeHandlerPlaces(const QString &program)
{
    return {program,
            dataHome(),
            dataFolders(),
            configHome(),
            configFolders(),
            qEnvironmentVariable("XDG_CURRENT_DESKTOP").toLower().split(u':', Qt::SkipEmptyParts)};
}

QStringList registerSchemeHandler(FileCalls &calls, const SchemeHandlerPlaces &places)
{
    QStringList changed;
    const auto path = ownEntryPath(places);
    const bool isChanged = isPackaged(calls, places) ? removeOwn(calls, path)
                                                     : bringUpToDate(calls, path, ownEntry(places.program));
    if (isChanged)
        changed << path;
    if (associate(calls, places))
        changed << places.config + u"/mimeapps.list"_s;
    return changed;
}
