#include "ApplicationTable.h"

#include "processLog.h"

#include <csignal>
#include <utility>

ApplicationTable::ApplicationTable(const ApplicationPlaces &places)
    : m_processes(places.processRoot, places.user)
    , m_index(places.desktop)
    , m_display(places.display)
{}

void ApplicationTable::setWindows(std::vector<WindowFacts> windows,
                                  std::unordered_set<qint32> sessionProcesses)
{
    if (windows == m_windows && sessionProcesses == m_session)
        return;
    m_windows = std::move(windows);
    m_session = std::move(sessionProcesses);
    m_groupedRevision.reset();
}

void ApplicationTable::refresh(std::chrono::nanoseconds now)
{
    m_processes.refresh(now);
    takeEntries(now);
}

const std::vector<ApplicationGroup> &ApplicationTable::groups()
{
    if (m_groupedRevision != m_processes.revision())
        regroup();
    return m_groups;
}

const ApplicationGroup *ApplicationTable::groupOf(qint32 processId)
{
    groups();
    const auto found = m_groupOf.find(processId);
    return found == m_groupOf.end() ? nullptr : &m_groups[found->second];
}

const ApplicationGroup *ApplicationTable::stillRunning(const RunningApplication &application)
{
    const auto told = m_told.find(application.processId);
    if (told == m_told.end())
        return nullptr;
    const ProcessKey key{told->first, told->second};
    const auto *group = groupOf(application.processId);
    return group && group->processes[0] == key ? group : nullptr;
}

void ApplicationTable::noteTold(const ApplicationGroup &group)
{
    m_told.insert_or_assign(group.processes[0].id, group.processes[0].startTime);
}

void ApplicationTable::noteToldAll()
{
    m_told.clear();
    for (const auto &group : groups())
        noteTold(group);
}

RunningApplication ApplicationTable::applicationOfWindow(const WindowFacts &window)
{
    takeEntries(timeSinceBoot());
    return ::applicationOfWindow(window, m_index);
}

void ApplicationTable::requestEnd(const ProcessKey &mainProcess)
{
    m_processes.signal(mainProcess, SIGTERM);
}

void ApplicationTable::kill(const ApplicationGroup &group)
{
    // The main process first: it could start its helpers again.
    for (const auto &process : group.processes) {
        if (m_processes.signal(process, SIGKILL))
            qCDebug(logProcess) << "killed process" << process.id;
    }
}

void ApplicationTable::takeEntries(std::chrono::nanoseconds now)
{
    if (!m_index.refresh(now))
        return;
    m_identities.clear();
    m_groupedRevision.reset();
}

void ApplicationTable::regroup()
{
    m_identities.keepOnly(m_processes.processes());
    m_groups =
        groupApplications(m_processes.processes(), m_windows, m_session, m_index, m_identities, m_display);
    m_groupedRevision = m_processes.revision();
    m_groupOf.clear();
    std::vector<ProcessKey> watched;
    for (const auto &group : m_groups)
        watched.push_back(group.processes[0]);
    for (size_t at = 0; at < m_groups.size(); ++at) {
        const auto &processes = m_groups[at].processes;
        watched.insert(watched.end(), processes.begin() + 1, processes.end());
        for (const auto &process : processes)
            m_groupOf.emplace(process.id, at);
    }
    m_processes.watch(watched);
}
