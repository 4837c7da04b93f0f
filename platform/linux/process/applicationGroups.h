#pragma once

#include "ProcessIdentities.h"
#include "ProcessTable.h"
#include "RunningApplications.h"
#include "desktopMatching.h"

#include <unordered_map>
#include <unordered_set>
#include <vector>

/// An application's window, as a window system reports it. Docks, desktops and notifications are none.
struct WindowFacts
{
    qint32 processId = 0;  ///< 0 where it is not known or not on this machine
    QString applicationId; ///< desktop id that the window itself names; else empty
    QString instance;      ///< first part of WM_CLASS; else empty
    QString className;     ///< second part of WM_CLASS, or what serves as such; else empty

    /// Time since boot at which the window was there: no process that started later is its owner.
    std::chrono::nanoseconds seen = std::chrono::nanoseconds::max();

    bool operator==(const WindowFacts &) const = default;
};

/// An application and the processes it consists of.
struct ApplicationGroup
{
    RunningApplication application;
    std::vector<ProcessKey> processes; ///< the main process first

    bool operator==(const ApplicationGroup &) const = default;
};

/// Makes applications of processes and windows: each process belongs to its nearest ancestor that is one,
/// unless it is another itself or runs inside a terminal of it. Ordered by the start of the main processes.
/// `sessionProcesses` are parts of the session whatever they are called. A process that was started on
/// another display than `display` and has no window here belongs to another session; empty: all displays are
/// this one.
std::vector<ApplicationGroup> groupApplications(const std::unordered_map<qint32, ProcessFacts> &processes,
                                                const std::vector<WindowFacts> &windows,
                                                const std::unordered_set<qint32> &sessionProcesses,
                                                const DesktopIndex &index, ProcessIdentities &identities,
                                                const QString &display);

/// The entry that a window names or carries the class of.
DesktopMatch matchWindow(const WindowFacts &window, const DesktopIndex &index);

/// How an application is called whose window is all that is known.
RunningApplication applicationOfWindow(const WindowFacts &window, const DesktopIndex &index);
