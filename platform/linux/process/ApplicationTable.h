#pragma once

#include "DesktopIndex.h"
#include "ProcessTable.h"
#include "applicationGroups.h"

#include <optional>

/// Where an ApplicationTable reads.
struct ApplicationPlaces
{
    QString processRoot = QStringLiteral("/proc"); ///< another one is a picture: nothing in it is signalled
    uid_t user = geteuid();
    QString display; ///< of this session, as displayName() gives it; empty: of whichever
    DesktopPlaces desktop = DesktopPlaces::ofThisUser();
};

/// The running applications of one user, from processes, desktop entries and whatever windows it is told of.
/// For every window system: it knows none itself.
class ApplicationTable
{
public:
    explicit ApplicationTable(const ApplicationPlaces &places);

    bool readable() const { return m_processes.readable(); }

    /// The windows there are, and processes that are parts of the session whatever they are called.
    void setWindows(std::vector<WindowFacts> windows, std::unordered_set<qint32> sessionProcesses);

    /// Takes in all processes and desktop entries that changed. `now` is time since boot.
    void refresh(std::chrono::nanoseconds now = timeSinceBoot());

    /// Takes in only the end of applications; cheaper.
    void noticeEnds() { m_processes.noticeEnds(); }

    /// Every running application, in the order of their start.
    const std::vector<ApplicationGroup> &groups();

    /// The application that a process belongs to; none where it belongs to none or is not known yet.
    const ApplicationGroup *groupOf(qint32 processId);

    bool knowsProcess(qint32 processId) const { return m_processes.process(processId) != nullptr; }

    /// The very process that was last told of under the application's number, if it lives and still is an
    /// application's main process.
    const ApplicationGroup *stillRunning(const RunningApplication &application);

    /// Remembers that the caller was told of a group: only such can be quit.
    void noteTold(const ApplicationGroup &group);
    void noteToldAll();

    /// How an application is called whose process is not known.
    RunningApplication applicationOfWindow(const WindowFacts &window);

    /// Asks the main process to end itself.
    void requestEnd(const ProcessKey &mainProcess);

    /// Ends all processes of an application.
    void kill(const ApplicationGroup &group);

private:
    void takeEntries(std::chrono::nanoseconds now);
    void regroup();

    ProcessTable m_processes;
    DesktopIndex m_index;
    ProcessIdentities m_identities;
    QString m_display;
    std::vector<WindowFacts> m_windows;
    std::unordered_set<qint32> m_session;
    std::vector<ApplicationGroup> m_groups;
    std::unordered_map<qint32, size_t> m_groupOf;
    std::unordered_map<qint32, quint64> m_told; ///< start time by number
    std::optional<quint64> m_groupedRevision;   ///< none: windows or entries changed since
};
