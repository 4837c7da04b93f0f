#include "desktopMatching.h"

using namespace Qt::StringLiterals;

namespace {

DesktopEntryPointer bySnap(const QString &snap, const ProcessFacts &process, const DesktopIndex &index)
{
    if (snap.isEmpty())
        return nullptr;
    // A snap "foo" with a program "foo" has the id "foo_foo"; further programs have their own.
    const auto program = baseName(process.executable);
    for (const auto &id : {snap + u'_' + program, snap + u'_' + snap, snap}) {
        if (const auto entry = index.byId(id))
            return entry;
    }
    return nullptr;
}

/// CHROME_DESKTOP is inherited by all that the browser starts, so the program's name has to agree.
DesktopEntryPointer byChromeDesktop(const ProcessFacts &process, const DesktopIndex &index)
{
    const auto entry = index.byId(process.chromeDesktop);
    if (!entry)
        return nullptr;
    const auto name = baseName(process.executable);
    const auto wanted = baseName(effectiveCall(entry->command).program);
    const bool agrees = !name.isEmpty() && (wanted.startsWith(name) || name.startsWith(wanted) ||
                                            entry->id.startsWith(name) || isInterpreter(name));
    return agrees ? entry : nullptr;
}

DesktopEntryPointer byProgram(const ProcessFacts &process, const DesktopIndex &index)
{
    if (const auto entry = index.byProgram(process.call))
        return entry;
    if (process.appImage.isEmpty())
        return nullptr;
    return index.byProgram({process.appImage, process.call.arguments, false});
}

DesktopEntryPointer byName(const ProcessFacts &process, const DesktopIndex &index)
{
    if (const auto entry = byChromeDesktop(process, index))
        return entry;
    if (const auto entry = index.byProgramName(process.call))
        return entry;
    const auto name = baseName(process.call.program);
    if (process.call.script || isCommonProgramName(name) || isInterpreter(name) || isLauncher(name))
        return nullptr;
    const auto entry = index.byLooseName(name);
    return entry && !entry->runsInTerminal ? entry : nullptr;
}

} // namespace

DesktopMatch matchProcess(const ProcessFacts &process, const DesktopIndex &index)
{
    if (const auto entry = index.byId(process.flatpakId))
        return {entry, Evidence::Launch};
    if (const auto entry = bySnap(process.cgroup.snapName, process, index))
        return {entry, Evidence::Launch};
    if (const auto entry = index.byId(process.launchedId))
        return {entry, Evidence::Launch};
    if (const auto entry = byProgram(process, index))
        return {entry, Evidence::Program};
    if (const auto entry = byName(process, index))
        return {entry, Evidence::Name};
    return {};
}

DesktopEntryPointer matchScope(const ProcessFacts &process, const DesktopIndex &index)
{
    for (const auto &id : process.cgroup.desktopIds) {
        if (const auto entry = index.byId(id))
            return entry->terminalEmulator || entry->runsInTerminal ? nullptr : entry;
    }
    return nullptr;
}
