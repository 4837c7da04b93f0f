#include "ProcFiles.h"

#include "FileHandle.h"
#include "displayName.h"
#include "isShortage.h"
#include "keyFiles.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestCommandLine = 4096;
constexpr qsizetype longestEnvironment = 128 * 1024;
constexpr qsizetype longestSmallFile = 8192;
constexpr quint64 kernelThreadFlag = 0x00200000; // PF_KTHREAD of the kernel's sched.h

/// "PID/name" without an allocation: this is read hundreds of times.
class ProcPath
{
public:
    ProcPath(qint32 id, const char *name)
    {
        const auto number = std::to_chars(m_text, m_text + 16, id);
        auto *end = number.ptr;
        if (*name)
            *end++ = '/';
        qstrncpy(end, name, size_t(m_text + sizeof(m_text) - end));
    }
    const char *text() const { return m_text; }

private:
    char m_text[64];
};

QString desktopIdOfFile(const QString &path)
{
    static constexpr auto folder = "/applications/"_L1;
    const auto at = path.lastIndexOf(folder);
    auto id = at < 0 ? baseName(path) : path.sliced(at + folder.size());
    if (!id.endsWith(".desktop"_L1))
        return {};
    id.chop(8);
    return id.replace(u'/', u'-');
}

} // namespace

ProcFiles::ProcFiles(const QString &root)
    : m_listing(opendir(QFile::encodeName(root).constData()))
{}

ProcFiles::~ProcFiles() = default;

void ProcFiles::list(std::vector<ProcessNumber> &numbers)
{
    numbers.clear();
    if (!m_listing)
        return;
    rewinddir(m_listing.get());
    while (const auto *entry = readdir(m_listing.get())) {
        const char *name = entry->d_name;
        qint32 id = 0;
        const auto parsed = std::from_chars(name, name + strlen(name), id);
        if (parsed.ec == std::errc() && *parsed.ptr == '\0' && id > 0)
            numbers.push_back({id, entry->d_ino});
    }
    if (!std::is_sorted(numbers.begin(), numbers.end()))
        std::sort(numbers.begin(), numbers.end());
}

std::optional<uid_t> ProcFiles::ownerOfFiles(qint32 id) const
{
    struct stat status;
    if (!m_listing || fstatat(dirfd(m_listing.get()), ProcPath(id, "").text(), &status, 0) != 0)
        return std::nullopt;
    return status.st_uid;
}

std::optional<uid_t> ProcFiles::owner(qint32 id) const
{
    const auto shown = ownerOfFiles(id);
    if (shown != uid_t(0))
        return shown;
    const auto status = read(id, "status", longestSmallFile);
    if (!status)
        return std::nullopt;
    const auto &text = *status;
    const auto at = text.indexOf("\nUid:");
    if (at < 0)
        return shown;
    const auto fields =
        text.sliced(at + 5, qMax(text.indexOf('\n', at + 1) - at - 5, qsizetype(0))).simplified();
    bool ok = false;
    const auto effective = fields.split(' ').value(1).toUInt(&ok);
    return ok ? std::optional<uid_t>(effective) : shown;
}

std::optional<ProcessState> ProcFiles::state(qint32 id) const
{
    return parseProcessState(read(id, "stat", 1024).value_or(QByteArray()));
}

QString ProcFiles::executable(qint32 id) const
{
    if (!m_listing)
        return {};
    char target[4096];
    const auto length =
        readlinkat(dirfd(m_listing.get()), ProcPath(id, "exe").text(), target, sizeof(target));
    if (length <= 0)
        return {};
    QByteArrayView path(target, length);
    static constexpr QByteArrayView deleted(" (deleted)");
    if (path.endsWith(deleted))
        path.chop(deleted.size());
    return QFile::decodeName(path.toByteArray());
}

std::optional<ProcessFacts> ProcFiles::facts(qint32 id) const
{
    const auto found = state(id);
    if (!found)
        return std::nullopt;
    ProcessFacts facts;
    facts.id = id;
    facts.state = *found;
    if (found->kernelThread || found->ended())
        return facts;
    const auto commandLine = read(id, "cmdline", longestCommandLine);
    const auto cgroup = read(id, "cgroup", longestSmallFile);
    const auto flatpak = read(id, "root/.flatpak-info", longestSmallFile);
    const auto environment = read(id, "environ", longestEnvironment);
    if (!commandLine || !cgroup || !flatpak || !environment)
        return std::nullopt;
    facts.executable = executable(id);
    const auto words = commandLine->split('\0');
    for (const auto &word : words)
        facts.commandLine << QString::fromLocal8Bit(word);
    while (!facts.commandLine.isEmpty() && facts.commandLine.last().isEmpty())
        facts.commandLine.removeLast();
    // A process that guards itself hides its executable; its command line stays open.
    const auto claimed = facts.commandLine.value(0);
    if (facts.executable.isEmpty() && claimed.startsWith(u'/'))
        facts.executable = QFileInfo(claimed).canonicalFilePath();
    if (isInterpreter(baseName(facts.executable)))
        facts.call = effectiveCall(QStringList(facts.executable) + facts.commandLine.mid(1));
    else
        facts.call = {facts.executable.isEmpty() ? claimed : facts.executable, facts.commandLine.mid(1),
                      false};
    facts.cgroup = cgroupApplication(*cgroup);
    facts.flatpakId = QString::fromUtf8(keyFileValue(*flatpak, "Application", "name").value_or(QByteArray()));
    takeEnvironment(facts, *environment);
    return facts;
}

std::optional<QByteArray> ProcFiles::read(qint32 id, const char *name, qsizetype atMost) const
{
    if (!m_listing)
        return QByteArray();
    const FileHandle file(openat(dirfd(m_listing.get()), ProcPath(id, name).text(),
                                 O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return isShortage(errno) ? std::nullopt : std::optional(QByteArray());
    QByteArray bytes;
    char chunk[4096];
    while (bytes.size() < atMost) {
        const auto got =
            ::read(file.descriptor(), chunk, size_t(qMin(qsizetype(sizeof(chunk)), atMost - bytes.size())));
        if (got < 0 && isShortage(errno))
            return std::nullopt;
        if (got <= 0)
            break;
        bytes.append(chunk, got);
    }
    return bytes;
}

void ProcFiles::takeEnvironment(ProcessFacts &facts, const QByteArray &environment)
{
    QByteArray launchedFile;
    qint32 launchedAs = 0;
    QByteArray appFolder;
    for (const auto &variable : environment.split('\0')) {
        const auto equals = variable.indexOf('=');
        if (equals < 0)
            continue;
        const auto name = QByteArrayView(variable).first(equals);
        const auto value = variable.sliced(equals + 1);
        if (name == "GIO_LAUNCHED_DESKTOP_FILE")
            launchedFile = value;
        else if (name == "GIO_LAUNCHED_DESKTOP_FILE_PID")
            launchedAs = value.toInt();
        else if (name == "CHROME_DESKTOP")
            facts.chromeDesktop = desktopIdOfFile(QFile::decodeName(value));
        else if (name == "DISPLAY")
            facts.display = displayName(value);
        else if (name == "APPIMAGE")
            facts.appImage = QFile::decodeName(value);
        else if (name == "APPDIR")
            appFolder = value;
    }
    if (launchedAs == facts.id)
        facts.launchedId = desktopIdOfFile(QFile::decodeName(launchedFile));
    // Whatever an AppImage starts inherits the two: only what lies in its own folder is it.
    if (appFolder.isEmpty() || !facts.executable.startsWith(QFile::decodeName(appFolder) + u'/'))
        facts.appImage.clear();
}

std::optional<ProcessState> parseProcessState(const QByteArray &text)
{
    // The name in parentheses may hold spaces and parentheses itself: it ends at the last one.
    const auto open = text.indexOf('(');
    const auto close = text.lastIndexOf(')');
    if (open < 0 || close < open || close + 2 >= text.size())
        return std::nullopt;
    const auto fields = text.sliced(close + 2).split(' ');
    if (fields.size() < 20 || fields[0].isEmpty())
        return std::nullopt;
    ProcessState state;
    bool numbers[4];
    state.command = text.sliced(open + 1, close - open - 1);
    state.state = fields[0][0];
    state.parent = fields[1].toInt(&numbers[0]);
    state.terminal = fields[4].toInt(&numbers[1]);
    state.kernelThread = fields[6].toULongLong(&numbers[2]) & kernelThreadFlag;
    state.startTime = fields[19].toULongLong(&numbers[3]);
    return numbers[0] && numbers[1] && numbers[2] && numbers[3] ? std::optional(state) : std::nullopt;
}
