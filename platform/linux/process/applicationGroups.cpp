#include "applicationGroups.h"

#include "browserNames.h"
#include "shownName.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int none = -1;

/// A group while it is being put together.
struct Draft
{
    DesktopEntryPointer entry;
    const ProcessFacts *root = nullptr;
    QString windowClass;
    bool hasWindow = false;
    int parent = none; ///< the group whose process started this one
    std::vector<const ProcessFacts *> members;
    std::vector<const ProcessFacts *> claimants; ///< members that have a window or an entry of their own
};

/// What the windows of one process tell about it.
struct WindowEvidence
{
    DesktopMatch match;
    QString className;
    std::chrono::nanoseconds seen{};
};

QString classOf(const WindowFacts &window)
{
    return window.className.isEmpty() ? window.instance : window.className;
}

std::optional<QString> firstOf(std::initializer_list<QString> names)
{
    const auto *found =
        std::find_if(names.begin(), names.end(), [](const auto &name) { return !name.isEmpty(); });
    return found == names.end() ? std::nullopt : std::optional(*found);
}

/// The name, and the id where there is one, of an application with that entry, program and window class.
RunningApplication described(const DesktopEntryPointer &entry, const QString &executable,
                             const QString &windowClass)
{
    RunningApplication application;
    if (entry)
        application.bundleIdentifier = shownName(entry->id);
    if (!executable.isEmpty())
        application.bundlePath = executable;
    application.localizedName =
        supportedBrowserName(application.bundleIdentifier.value_or(QString()), executable);
    if (!application.localizedName)
        application.localizedName = firstOf({entry ? entry->name : QString(), windowClass,
                                             entry ? QString() : shownName(baseName(executable))});
    return application;
}

class Grouping
{
public:
    Grouping(const std::unordered_map<qint32, ProcessFacts> &processes,
             const std::vector<WindowFacts> &windows, const std::unordered_set<qint32> &sessionProcesses,
             const DesktopIndex &index, ProcessIdentities &identities, const QString &display)
        : m_processes(processes)
        , m_session(sessionProcesses)
        , m_index(index)
        , m_identities(identities)
        , m_display(display)
    {
        for (const auto &window : windows)
            takeWindow(window);
    }

    std::vector<ApplicationGroup> groups()
    {
        // Older processes first: of those in one scope the oldest leads, and the order never jumps.
        std::vector<const ProcessFacts *> ordered;
        ordered.reserve(m_processes.size());
        for (const auto &[id, process] : m_processes)
            ordered.push_back(&process);
        std::sort(ordered.begin(), ordered.end(), [](const auto *one, const auto *other) {
            return std::pair(one->state.startTime, one->id) < std::pair(other->state.startTime, other->id);
        });
        for (const auto *process : ordered)
            groupOf(*process);
        std::vector<ApplicationGroup> result;
        for (const auto &draft : m_drafts) {
            if (isApplication(draft))
                result.push_back(finished(draft));
        }
        std::sort(result.begin(), result.end(), [](const auto &one, const auto &other) {
            const auto key = [](const auto &group) {
                return std::pair(group.processes[0].startTime, group.processes[0].id);
            };
            return key(one) < key(other);
        });
        return result;
    }

private:
    void takeWindow(const WindowFacts &window)
    {
        if (window.processId <= 0)
            return;
        auto &evidence = m_windows[window.processId];
        auto match = matchWindow(window, m_index);
        if (match.evidence > evidence.match.evidence)
            evidence.match = std::move(match);
        if (evidence.className.isEmpty())
            evidence.className = classOf(window);
        evidence.seen = qMax(evidence.seen, window.seen);
    }

    /// The number of the group that a process belongs to, or none.
    int groupOf(const ProcessFacts &process)
    {
        // Entered first as none, which also ends a circle of parents in a made-up or changing /proc.
        const auto [known, isNew] = m_groupOf.emplace(process.id, none);
        if (!isNew)
            return known->second;
        const int group = findGroup(process);
        m_groupOf[process.id] = group;
        if (group != none)
            m_drafts[size_t(group)].members.push_back(&process);
        return group;
    }

    int findGroup(const ProcessFacts &process)
    {
        const auto &identity = m_identities.of(process, m_index);
        if (m_session.contains(process.id) || identity.sessionPart)
            return none;
        const auto window = m_windows.find(process.id);
        const bool hasWindow =
            window != m_windows.end() && startOf(process.state.startTime) <= window->second.seen;
        if (!hasWindow && isOfAnotherSession(process))
            return none;
        auto match = identity.match;
        if (hasWindow && window->second.match.evidence > match.evidence)
            match = window->second.match;
        const int above = groupAbove(process);
        int group = none;
        if (match.entry)
            group = groupWithEntry(match.entry, above);
        else if (above != none && (!hasWindow || isHelper(process, window->second, above)))
            group = above;
        else
            group = groupInScope(process);
        const bool startsOne = group == none && (match.entry || hasWindow);
        if (startsOne)
            group = newGroup(process, match.entry, above);
        if (group != none && (hasWindow || match.entry))
            m_drafts[size_t(group)].claimants.push_back(&process);
        if (group != none && hasWindow)
            noteWindow(m_drafts[size_t(group)], window->second);
        return group;
    }

    bool isOfAnotherSession(const ProcessFacts &process) const
    {
        return !m_display.isEmpty() && !process.display.isEmpty() && process.display != m_display;
    }

    /// The group of the parent, unless the process runs inside a terminal that the parent opened.
    int groupAbove(const ProcessFacts &process)
    {
        const auto found = m_processes.find(process.state.parent);
        if (found == m_processes.end() || found->first == process.id)
            return none;
        const auto &parent = found->second;
        if (parent.state.startTime > process.state.startTime)
            return none; // a newcomer under the number of a parent that has ended
        const bool ownTerminal =
            process.state.terminal != 0 && process.state.terminal != parent.state.terminal;
        return ownTerminal ? none : groupOf(parent);
    }

    /// The nearest group above, the given one included, that is the entry's already.
    int groupWithEntry(const DesktopEntryPointer &entry, int above) const
    {
        while (above != none && m_drafts[size_t(above)].entry != entry)
            above = m_drafts[size_t(above)].parent;
        return above;
    }

    /// Whether a process with a window of no known entry is a helper of the application that started it, not
    /// a program of its own: it lies in the same folder or its windows have the same class.
    bool isHelper(const ProcessFacts &process, const WindowEvidence &window, int above) const
    {
        const auto &draft = m_drafts[size_t(above)];
        const auto &mine = process.executable;
        const auto &theirs = draft.root->executable;
        if (mine == theirs && !mine.isEmpty() && !isInterpreter(baseName(mine)))
            return true;
        if (!window.className.isEmpty() && window.className == draft.windowClass)
            return true;
        const auto folder = theirs.first(theirs.lastIndexOf(u'/') + 1);
        const bool sharedFolder =
            folder.size() <= 1 || folder.endsWith("/bin/"_L1) || folder.endsWith("/games/"_L1);
        return !sharedFolder && mine.startsWith(folder);
    }

    int groupInScope(const ProcessFacts &process)
    {
        const auto &entry = m_identities.of(process, m_index).scope;
        if (!entry)
            return none;
        const auto known = m_groupOfScope.constFind(process.cgroup.unit);
        if (known != m_groupOfScope.cend())
            return *known;
        return newGroup(process, entry, none);
    }

    int newGroup(const ProcessFacts &process, const DesktopEntryPointer &entry, int above)
    {
        const int number = int(m_drafts.size());
        Draft draft;
        draft.entry = entry;
        draft.root = &process;
        draft.parent = above;
        m_drafts.push_back(std::move(draft));
        if (entry && entry == m_identities.of(process, m_index).scope)
            m_groupOfScope.insert(process.cgroup.unit, number);
        return number;
    }

    void noteWindow(Draft &draft, const WindowEvidence &window)
    {
        draft.hasWindow = true;
        if (draft.windowClass.isEmpty())
            draft.windowClass = window.className;
        if (!draft.entry)
            draft.entry = window.match.entry;
    }

    /// An entry that is not shown in menus is a service of the desktop until it has a window.
    static bool isApplication(const Draft &draft)
    {
        return draft.hasWindow || (draft.entry && !draft.entry->noDisplay);
    }

    /// The first process, unless it is a wrapper that only waits for the program itself.
    static const ProcessFacts *mainProcess(const Draft &draft)
    {
        const auto isProgram = [](const auto *each) { return !isLauncher(baseName(each->executable)); };
        if (isProgram(draft.root))
            return draft.root;
        const auto found = std::find_if(draft.claimants.begin(), draft.claimants.end(), isProgram);
        return found == draft.claimants.end() ? draft.root : *found;
    }

    static ApplicationGroup finished(const Draft &draft)
    {
        const auto *leader = mainProcess(draft);
        ApplicationGroup group;
        group.application = described(draft.entry, leader->executable, draft.windowClass);
        group.application.processId = leader->id;
        group.processes.push_back({leader->id, leader->state.startTime});
        for (const auto *member : draft.members) {
            if (member != leader)
                group.processes.push_back({member->id, member->state.startTime});
        }
        return group;
    }

    const std::unordered_map<qint32, ProcessFacts> &m_processes;
    const std::unordered_set<qint32> &m_session;
    const DesktopIndex &m_index;
    ProcessIdentities &m_identities;
    const QString &m_display;
    std::unordered_map<qint32, WindowEvidence> m_windows;
    std::unordered_map<qint32, int> m_groupOf;
    QHash<QString, int> m_groupOfScope;
    std::vector<Draft> m_drafts;
};

} // namespace

std::vector<ApplicationGroup> groupApplications(const std::unordered_map<qint32, ProcessFacts> &processes,
                                                const std::vector<WindowFacts> &windows,
                                                const std::unordered_set<qint32> &sessionProcesses,
                                                const DesktopIndex &index, ProcessIdentities &identities,
                                                const QString &display)
{
    return Grouping(processes, windows, sessionProcesses, index, identities, display).groups();
}

DesktopMatch matchWindow(const WindowFacts &window, const DesktopIndex &index)
{
    if (const auto entry = index.byId(window.applicationId))
        return {entry, Evidence::WindowId};
    if (const auto entry = index.byWindowClass(window.instance, window.className))
        return {entry, Evidence::WindowClass};
    return {};
}

RunningApplication applicationOfWindow(const WindowFacts &window, const DesktopIndex &index)
{
    return described(matchWindow(window, index).entry, {}, classOf(window));
}
