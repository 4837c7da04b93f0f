#pragma once

#include "DesktopIndex.h"
#include "ProcFiles.h"

/// How sure it is that a process belongs to an entry, the weakest first.
enum class Evidence {
    None,
    Name,        ///< its program has the file name that an entry runs, from elsewhere
    WindowClass, ///< its windows carry the class of the entry
    Program,     ///< it runs the very file that the entry runs
    Launch,      ///< it was launched as this entry, or by a snap or sandbox of that name
    WindowId,    ///< its windows name the entry by its id
};

struct DesktopMatch
{
    DesktopEntryPointer entry;
    Evidence evidence = Evidence::None;
};

/// The entry that a process belongs to by what it is itself, whatever its parents are.
DesktopMatch matchProcess(const ProcessFacts &process, const DesktopIndex &index);

/// The entry of the scope that a process was started into. Everything that its application starts is in that
/// scope too, so this counts only where nothing else is known. Never a terminal's: its scope holds whatever
/// runs inside the terminal.
DesktopEntryPointer matchScope(const ProcessFacts &process, const DesktopIndex &index);
