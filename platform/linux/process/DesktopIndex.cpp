#include "DesktopIndex.h"

#include "processLog.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto lookInterval = 10s;
constexpr qsizetype largestEntry = 256 * 1024; // real ones are below 50 KiB
constexpr qsizetype mostEntries = 10'000;
constexpr int deepestFolder = 8;

// A folder that changed this shortly before it was read may change again within the same tick of its clock.
constexpr qint64 doubtfulAge = 2'000'000'000;

struct FolderState
{
    qint64 changed = 0; ///< modification time in ns; 0 for a missing folder
    std::pair<quint64, quint64> identity;
};

FolderState stateOf(const QString &folder)
{
    struct stat status;
    if (stat(QFile::encodeName(folder).constData(), &status) != 0)
        return {};
    return {qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec,
            {status.st_dev, status.st_ino}};
}

/// The first bytes of a plain file, or none: a pipe or a device under that name must not hold us up.
QByteArray boundedFile(const QString &path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file < 0)
        return {};
    QByteArray bytes;
    struct stat status;
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
        bytes.resize(qMin(qsizetype(status.st_size), largestEntry));
        const auto got = read(file, bytes.data(), size_t(bytes.size()));
        bytes.resize(qMax(qsizetype(got), qsizetype(0)));
    }
    close(file);
    return bytes;
}

/// How well an entry's command fits a running one; none where it is another application's of the same
/// program.
std::optional<int> fit(const DesktopEntry &entry, const ProgramCall &wanted, const ProgramCall &running)
{
    int score = 0;
    int present = 0;
    for (const auto &argument : wanted.arguments) {
        if (running.arguments.contains(argument)) {
            ++present;
            continue;
        }
        // "browser --app=…" and "store game:7" are other applications; a plain option may just be absent.
        if (!argument.startsWith(u'-') || argument.startsWith("--app"_L1))
            return std::nullopt;
        score = -100;
    }
    const auto name = baseName(running.program);
    score += 10 * present;
    if (baseName(wanted.program) == name)
        score += 4;
    if (entry.id.section(u'.', -1).compare(name, Qt::CaseInsensitive) == 0)
        score += 2;
    if (!entry.noDisplay)
        score += 1;
    return score;
}

} // namespace

DesktopPlaces DesktopPlaces::ofThisUser()
{
    const auto split = [](const QString &value) { return value.split(u':', Qt::SkipEmptyParts); };
    const auto home = QDir::homePath();
    const auto ownData = qEnvironmentVariable("XDG_DATA_HOME");
    const auto allData = qEnvironmentVariable("XDG_DATA_DIRS");
    DesktopPlaces places;
    places.dataFolders << (ownData.startsWith(u'/') ? ownData : home + "/.local/share"_L1);
    places.dataFolders << split(allData.isEmpty() ? u"/usr/local/share:/usr/share"_s : allData);
    // Sessions that were started without a login shell lack these in XDG_DATA_DIRS.
    places.dataFolders << home + "/.local/share/flatpak/exports/share"_L1
                       << u"/var/lib/flatpak/exports/share"_s << u"/var/lib/snapd/desktop"_s;
    places.dataFolders.removeDuplicates();
    const auto path = qEnvironmentVariable("PATH");
    places.programFolders =
        split(path.isEmpty() ? u"/usr/local/bin:/usr/bin:/bin:/usr/local/games:/usr/games"_s : path);
    places.locale = messagesLocale();
    return places;
}

DesktopIndex::DesktopIndex(DesktopPlaces places)
    : m_places(std::move(places))
    , m_locales(localeNames(m_places.locale))
{}

bool DesktopIndex::refresh(std::chrono::nanoseconds now)
{
    if (m_lookedAt && now - *m_lookedAt < lookInterval)
        return false;
    const bool first = !m_lookedAt;
    m_lookedAt = now;
    if (!first && !foldersChanged())
        return false;
    readAll();
    return true;
}

DesktopEntryPointer DesktopIndex::byId(const QString &id) const
{
    const auto found = m_byId.value(id);
    return found && !found->hidden ? found : nullptr;
}

DesktopEntryPointer DesktopIndex::byProgram(const ProgramCall &call) const
{
    return call.program.startsWith(u'/') ? best(m_byPath, call.program, call) : nullptr;
}

DesktopEntryPointer DesktopIndex::byProgramName(const ProgramCall &call) const
{
    const auto name = baseName(call.program);
    return isCommonProgramName(name) || isInterpreter(name) ? nullptr : best(m_byName, name, call);
}

DesktopEntryPointer DesktopIndex::byWindowClass(const QString &instance, const QString &className) const
{
    for (const auto &name : {instance, className}) {
        if (const auto found = m_byWindowClass.value(name); found && !name.isEmpty())
            return found;
    }
    for (const auto &name : {className, instance}) {
        if (const auto found = byLooseName(name))
            return found;
    }
    return nullptr;
}

DesktopEntryPointer DesktopIndex::byLooseName(const QString &name) const
{
    return name.isEmpty() ? nullptr : m_byLooseName.value(name.toLower());
}

bool DesktopIndex::foldersChanged() const
{
    return std::any_of(m_folders.begin(), m_folders.end(),
                       [](const Folder &folder) { return folder.changed != stateOf(folder.path).changed; });
}

void DesktopIndex::readAll()
{
    m_folders.clear();
    m_visited.clear();
    m_byId.clear();
    for (const auto &folder : std::as_const(m_places.dataFolders))
        readFolder(folder + "/applications"_L1, {}, 0);
    indexEntries();
    qCDebug(logProcess) << "read" << m_byId.size() << "desktop entries";
}

void DesktopIndex::readFolder(const QString &folder, const QString &prefix, int depth)
{
    const auto state = stateOf(folder);
    const auto now = QDateTime::currentMSecsSinceEpoch() * 1'000'000;
    const bool doubtful = state.changed != 0 && now - state.changed < doubtfulAge;
    m_folders.push_back({folder, doubtful ? -1 : state.changed});
    if (state.changed == 0 || !m_visited.insert(state.identity).second)
        return;
    QDirIterator files(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System);
    while (files.hasNext() && m_byId.size() < mostEntries) {
        files.next();
        const auto name = files.fileName();
        if (name.endsWith(".desktop"_L1))
            readEntry(files.filePath(), prefix + name.chopped(8));
        else if (depth < deepestFolder && files.fileInfo().isDir())
            readFolder(files.filePath(), prefix + name + u'-', depth + 1);
    }
}

void DesktopIndex::readEntry(const QString &path, const QString &id)
{
    if (m_byId.contains(id))
        return; // a more important folder has one
    const auto bytes = boundedFile(path);
    auto entry = bytes.isEmpty() ? std::nullopt : parseDesktopEntry(bytes, m_locales);
    if (!entry)
        return;
    entry->id = id;
    m_byId.insert(id, std::make_shared<const DesktopEntry>(std::move(*entry)));
}

void DesktopIndex::indexEntries()
{
    m_byPath.clear();
    m_byName.clear();
    m_byWindowClass.clear();
    m_byLooseName.clear();
    auto ids = m_byId.keys();
    ids.sort(); // whatever order the folders gave, the same entry wins
    for (const auto &id : std::as_const(ids)) {
        const auto entry = byId(id);
        if (!entry)
            continue;
        const auto loose = [&](const QString &name) {
            if (!name.isEmpty() && !m_byLooseName.contains(name.toLower()))
                m_byLooseName.insert(name.toLower(), entry);
        };
        if (!entry->startupWmClass.isEmpty() && !m_byWindowClass.contains(entry->startupWmClass))
            m_byWindowClass.insert(entry->startupWmClass, entry);
        loose(entry->startupWmClass);
        loose(id);
        loose(id.section(u'.', -1));
        // An entry that needs a terminal has no window of its own, and its program is often an interpreter.
        if (entry->runsInTerminal)
            continue;
        const auto call = effectiveCall(entry->command);
        addProgram(entry, call);
        if (entry->tryExec != entry->command.value(0))
            addProgram(entry, {entry->tryExec, call.arguments, {}, {}, false});
    }
}

void DesktopIndex::addProgram(const DesktopEntryPointer &entry, const ProgramCall &call)
{
    const auto name = baseName(call.program);
    if (name.isEmpty() || isInterpreter(name) || isLauncher(name))
        return;
    m_byName.insert(name, {entry, call});
    const auto path = located(call.program);
    if (path.isEmpty())
        return;
    m_byPath.insert(path, {entry, call});
    const auto real = QFileInfo(path).canonicalFilePath();
    const auto realName = baseName(real);
    if (real.isEmpty() || real == path || isInterpreter(realName) || isLauncher(realName))
        return;
    m_byPath.insert(real, {entry, call});
    if (realName != name)
        m_byName.insert(realName, {entry, call});
}

QString DesktopIndex::located(const QString &program) const
{
    if (program.startsWith(u'/'))
        return program;
    if (program.contains(u'/'))
        return {};
    for (const auto &folder : m_places.programFolders) {
        const QString path = folder + u'/' + program;
        if (access(QFile::encodeName(path).constData(), X_OK) == 0)
            return path;
    }
    return {};
}

DesktopEntryPointer DesktopIndex::best(const Programs &programs, const QString &key, const ProgramCall &call)
{
    DesktopEntryPointer chosen;
    int chosenFit = 0;
    const auto [from, to] = programs.equal_range(key);
    for (auto each = from; each != to; ++each) {
        const auto found = fit(*each->entry, each->call, call);
        const bool better =
            found && (!chosen || *found > chosenFit || (*found == chosenFit && each->entry->id < chosen->id));
        if (better) {
            chosen = each->entry;
            chosenFit = *found;
        }
    }
    return chosen;
}
