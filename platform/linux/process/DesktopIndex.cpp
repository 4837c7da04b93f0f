#include "DesktopIndex.h"

#include "FileHandle.h"
#include "baseFolders.h"
#include "isShortage.h"
#include "processLog.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto lookInterval = 10s;
constexpr qsizetype largestEntry = 256 * 1024; // real ones are below 50 KiB
constexpr int mostNames = 10'000;              // in one data folder
constexpr int deepestFolder = 8;
constexpr qsizetype mostArguments = 64; // each is compared with all of a process

// A folder that changed this shortly before it was read may change again within the same tick of its clock.
constexpr time_t doubtfulSeconds = 2;

struct FolderState
{
    DesktopIndex::FolderDate changed; ///< none for a missing folder
    bool recent = false;              ///< changed at this moment
    std::pair<quint64, quint64> identity;
};

FolderState stateOf(const QString &folder)
{
    struct stat status;
    if (stat(QFile::encodeName(folder).constData(), &status) != 0)
        return {};
    const auto seconds =
        status.st_mtim.tv_sec; // any at all: systems differ in how they date what they install
    const auto now = time(nullptr);
    return {std::pair(qint64(seconds), qint64(status.st_mtim.tv_nsec)),
            seconds >= now - doubtfulSeconds && seconds <= now + doubtfulSeconds,
            {status.st_dev, status.st_ino}};
}

struct CloseFolder
{
    void operator()(DIR *folder) const { closedir(folder); }
};

} // namespace

/// One reading of a data folder's entries: what is left of its limit, and what it could not read.
struct DesktopIndex::Reading
{
    int namesLeft = mostNames;
    int unreadable = 0;
    bool again = false; ///< something may be readable in a moment; the system was short of files

    void note(int error)
    {
        ++unreadable;
        again = again || isShortage(error);
    }
};

namespace {

struct BoundedFile
{
    QByteArray bytes; ///< the first of a plain file; none of a pipe or a device, which must not hold us up
    int error = 0;    ///< of the system, where it could not be read
};

BoundedFile boundedFile(const QString &path)
{
    const FileHandle file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return {{}, errno};
    struct stat status;
    if (fstat(file.descriptor(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0)
        return {};
    QByteArray bytes(qMin(qsizetype(status.st_size), largestEntry), Qt::Uninitialized);
    const auto got = read(file.descriptor(), bytes.data(), size_t(bytes.size()));
    if (got < 0)
        return {{}, errno};
    bytes.truncate(got);
    return {bytes, 0};
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
    DesktopPlaces places;
    places.dataFolders << dataHome() << ::dataFolders();
    // Sessions that were started without a login shell lack these in XDG_DATA_DIRS.
    places.dataFolders << homeFolder() + "/.local/share/flatpak/exports/share"_L1
                       << u"/var/lib/flatpak/exports/share"_s << u"/var/lib/snapd/desktop"_s;
    places.dataFolders.removeDuplicates();
    places.programFolders = ::programFolders();
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
    return std::any_of(m_folders.begin(), m_folders.end(), [](const Folder &folder) {
        return folder.doubtful || folder.changed != stateOf(folder.path).changed;
    });
}

void DesktopIndex::readAll()
{
    m_folders.clear();
    m_visited.clear();
    m_byId.clear();
    for (const auto &folder : std::as_const(m_places.dataFolders)) {
        Reading reading;
        readFolder(folder + "/applications"_L1, {}, 0, reading);
        if (reading.namesLeft < 0)
            qCWarning(logProcess) << folder << "holds more than" << mostNames
                                  << "names of applications: the rest is left out";
        if (reading.unreadable > 0)
            qCInfo(logProcess) << reading.unreadable << "names of applications in" << folder
                               << "cannot be read" << (reading.again ? "at this moment" : "");
        if (reading.again)
            m_folders.back().doubtful = true; // all of them are read again
    }
    indexEntries();
    qCDebug(logProcess) << "read" << m_byId.size() << "desktop entries";
}

void DesktopIndex::readFolder(const QString &folder, const QString &prefix, int depth, Reading &reading)
{
    const auto state = stateOf(folder);
    m_folders.push_back({folder, state.changed, state.recent});
    if (!state.changed || !m_visited.insert(state.identity).second)
        return;
    const std::unique_ptr<DIR, CloseFolder> names(opendir(QFile::encodeName(folder).constData()));
    if (!names)
        reading.note(errno);
    while (const auto *found = names ? readdir(names.get()) : nullptr) {
        const auto name = QFile::decodeName(found->d_name);
        if (name == "."_L1 || name == ".."_L1)
            continue;
        if (--reading.namesLeft < 0)
            break;
        const QString path = folder + u'/' + name;
        if (name.endsWith(".desktop"_L1))
            readEntry(path, prefix + name.chopped(8), reading);
        else if (depth < deepestFolder && QFileInfo(path).isDir())
            readFolder(path, prefix + name + u'-', depth + 1, reading);
    }
}

void DesktopIndex::readEntry(const QString &path, const QString &id, Reading &reading)
{
    if (m_byId.contains(id))
        return; // a more important folder has one
    const auto file = boundedFile(path);
    if (file.error != 0)
        reading.note(file.error);
    auto entry = file.bytes.isEmpty() ? std::nullopt : parseDesktopEntry(file.bytes, m_locales);
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
        auto call = effectiveCall(entry->command);
        call.arguments = call.arguments.first(qMin(call.arguments.size(), mostArguments));
        addProgram(entry, call);
        if (entry->tryExec != entry->command.value(0))
            addProgram(entry, {entry->tryExec, call.arguments, false});
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
