#pragma once

#include "cgroupNames.h"
#include "programCall.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <dirent.h>
#include <memory>
#include <optional>
#include <sys/types.h>
#include <vector>

/// A process as a listing of /proc shows it. `node` changes when the number passes to another process.
struct ProcessNumber
{
    qint32 id = 0;
    quint64 node = 0;

    auto operator<=>(const ProcessNumber &) const = default;
};

/// The line in /proc/PID/stat, as far as it is of use here.
struct ProcessState
{
    qint32 parent = 0;
    quint64 startTime = 0; ///< clock ticks since boot; with the number it names a process for good
    qint32 terminal = 0;   ///< device number of the controlling terminal, 0 for none
    char state = '?';      ///< 'Z' and 'X': ended
    bool kernelThread = false;
    QByteArray command; ///< the kernel's short name, at most 15 bytes

    bool ended() const { return state == 'Z' || state == 'X'; }
    bool operator==(const ProcessState &) const = default;
};

/// All that is read once of a process of this user.
struct ProcessFacts
{
    qint32 id = 0;
    quint64 reading = 0; ///< another number for each time that a process is read
    ProcessState state;
    QString executable;      ///< absolute, links resolved; empty where it may not be read
    QStringList commandLine; ///< at most its first 4096 bytes
    ProgramCall call;        ///< what it runs, interpreters taken off
    CgroupApplication cgroup;
    QString flatpakId;
    QString launchedId;    ///< desktop id that this very process was launched as, else empty
    QString chromeDesktop; ///< desktop id a Chromium wrapper script named; children inherit it
    QString display;       ///< X display it was started on, as displayName() gives it; else empty
    QString appImage;      ///< path of the AppImage it was unpacked from
};

/// Reads a /proc. Every answer may be missing: processes end between two looks, and the system can be short
/// of files or memory at this moment.
class ProcFiles
{
public:
    explicit ProcFiles(const QString &root);
    ~ProcFiles();
    ProcFiles(const ProcFiles &) = delete;
    ProcFiles &operator=(const ProcFiles &) = delete;

    bool readable() const { return m_listing != nullptr; }

    /// Every process there is, by number.
    void list(std::vector<ProcessNumber> &numbers);

    /// Whom it belongs to. A process that guards itself shows root as the owner of its files, so root's are
    /// looked at more closely.
    std::optional<uid_t> owner(qint32 id) const;

    /// The owner of its files: the same, but for processes that guard themselves. Costs a tenth.
    std::optional<uid_t> ownerOfFiles(qint32 id) const;

    std::optional<ProcessState> state(qint32 id) const;
    QString executable(qint32 id) const;

    /// All or nothing: what could be read in part only is read again by whoever asks.
    std::optional<ProcessFacts> facts(qint32 id) const;

private:
    /// The first bytes of a file of a process, empty where it may not be read; none where the system is short
    /// of something.
    std::optional<QByteArray> read(qint32 id, const char *name, qsizetype atMost) const;
    static void takeEnvironment(ProcessFacts &facts, const QByteArray &environment);

    struct CloseListing
    {
        void operator()(DIR *listing) const { closedir(listing); }
    };
    std::unique_ptr<DIR, CloseListing> m_listing;
};

/// Reads the text of a stat file; no value where it is not of that form.
std::optional<ProcessState> parseProcessState(const QByteArray &text);
