// Finding blocked applications and making them quit: politely first, by force when that did not help.
#include "Clock.h"
#include "QuorvelController.h"
#include "RunningApplications.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long an application may take to quit when asked. Forced strictly later.
constexpr std::chrono::nanoseconds gracePeriod = 5s;

/// The list entries as they are searched for: lower case, trimmed, without empty ones.
QStringList searchedParts(const QStringList &entries)
{
    QStringList parts;
    for (const auto &entry : entries) {
        const auto part = entry.toLower().trimmed();
        if (!part.isEmpty())
            parts.append(part);
    }
    return parts;
}

} // namespace

QString QuorvelController::displayName(const RunningApplication &application) const
{
    if (application.localizedName)
        return *application.localizedName;
    return application.bundleIdentifier.value_or(text(u"unknown"));
}

QStringList QuorvelController::sortedDisplayNames(const std::vector<RunningApplication> &applications) const
{
    QStringList names;
    for (const auto &application : applications)
        names.append(displayName(application));
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<RunningApplication> QuorvelController::findBlockedRunningApps()
{
    const auto parts = searchedParts(config().blockedApps);
    const auto isBlocked = [&](const RunningApplication &application) {
        const auto name = displayName(application).toLower();
        const auto bundle = application.bundleIdentifier.value_or(QString()).toLower();
        const auto path = application.bundlePath.value_or(QString()).toLower();
        return std::any_of(parts.begin(), parts.end(), [&](const QString &part) {
            return name.contains(part) || bundle.contains(part) || path.contains(part);
        });
    };
    const auto ownProcessId = QCoreApplication::applicationPid();
    auto applications = m_ports.applications.running();
    std::erase_if(applications, [&](const RunningApplication &application) {
        return application.processId == ownProcessId || !isBlocked(application);
    });
    return applications;
}

void QuorvelController::enforceAppBlocks(const std::vector<RunningApplication> &applications)
{
    std::erase_if(m_terminateFirstSeenByPID, [&](const auto &asked) {
        return std::none_of(applications.begin(), applications.end(),
                            [&](const auto &application) { return application.processId == asked.first; });
    });
    for (const auto &application : applications) {
        const auto now = m_ports.clock.elapsed();
        const auto asked = m_terminateFirstSeenByPID.find(application.processId);
        if (asked == m_terminateFirstSeenByPID.end()) {
            m_terminateFirstSeenByPID[application.processId] = now;
            m_ports.applications.terminate(application);
            addEvent(u"Closed "_s + displayName(application) + u"."_s);
        } else if (now - asked->second > gracePeriod) {
            m_ports.applications.forceTerminate(application);
            asked->second = now;
            addEvent(u"Force closed "_s + displayName(application) + u"."_s);
        }
    }
}
