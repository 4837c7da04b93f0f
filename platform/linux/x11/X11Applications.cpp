#include "X11Applications.h"

#include "x11Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

ApplicationPlaces onDisplay(ApplicationPlaces places, const QString &display)
{
    places.display = display;
    return places;
}

} // namespace

X11Applications::X11Applications(std::shared_ptr<X11Connection> connection, const ApplicationPlaces &places,
                                 OwnQuit ownQuit)
    : m_connection(std::move(connection))
    , m_windows(m_connection)
    , m_table(std::make_shared<ApplicationTable>(onDisplay(places, m_connection->display())))
    , m_ownQuit(std::move(ownQuit))
{}

Availability X11Applications::availability() const
{
    if (!m_table->readable())
        return Availability::missing(u"The list of processes in /proc cannot be read."_s,
                                     u"Не удаётся прочитать список процессов в /proc."_s);
    return m_connection->availability();
}

std::optional<RunningApplication> X11Applications::frontmost()
{
    updateWindows();
    const auto window = m_windows.active();
    if (!m_connection->usable() || !window)
        return std::nullopt;
    m_table->noticeEnds();
    if (window->processId > 0 && !m_table->knowsProcess(window->processId))
        m_table->refresh();
    if (const auto *group = m_table->groupOf(window->processId)) {
        m_table->noteTold(*group);
        return group->application;
    }
    if (m_table->knowsProcess(window->processId))
        return std::nullopt; // a part of the session
    return m_table->applicationOfWindow(*window);
}

std::vector<RunningApplication> X11Applications::running()
{
    updateWindows();
    if (!m_connection->usable())
        return {};
    m_table->refresh();
    m_table->noteToldAll();
    std::vector<RunningApplication> applications;
    for (const auto &group : m_table->groups())
        applications.push_back(group.application);
    return applications;
}

void X11Applications::terminate(const RunningApplication &application)
{
    const auto group = refreshed(application);
    if (!group)
        return;
    const int windows = m_windows.closeWindowsOf(group->processes);
    std::vector<qint32> processes;
    for (const auto &process : group->processes)
        processes.push_back(process.id);
    const auto id = group->application.bundleIdentifier.value_or(QString());
    std::weak_ptr<ApplicationTable> table = m_table;
    m_ownQuit.ask(id, processes, [table, windows, leader = group->processes[0]](bool asked) {
        const auto alive = table.lock();
        if (alive && !asked && windows == 0)
            alive->requestEnd(leader);
    });
}

void X11Applications::forceTerminate(const RunningApplication &application)
{
    if (const auto group = refreshed(application))
        m_table->kill(*group);
}

void X11Applications::updateWindows()
{
    if (m_windows.update())
        m_table->setWindows(m_windows.windows(), m_windows.sessionProcesses());
}

/// The application as it is at this moment, if it is the one the caller was told of.
std::optional<ApplicationGroup> X11Applications::refreshed(const RunningApplication &application)
{
    updateWindows();
    if (!m_connection->usable())
        return std::nullopt;
    m_table->refresh();
    const auto *group = m_table->stillRunning(application);
    if (!group) {
        qCInfo(logX11) << "left alone, since it is gone: process" << application.processId;
        return std::nullopt;
    }
    return *group;
}
