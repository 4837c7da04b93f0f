#pragma once

#include "desktopMatching.h"

#include <unordered_map>

/// What a process is by itself, whatever its parents and windows are.
struct ProcessIdentity
{
    bool sessionPart = false;
    DesktopMatch match;        ///< as matchProcess() gives it
    DesktopEntryPointer scope; ///< as matchScope() gives it
};

/// Remembers the identity of each process, since it stays until the process is read anew or the desktop's
/// entries change, while the groups change with every process that starts.
class ProcessIdentities
{
public:
    /// Of the process as it was read; stays until the next call of keepOnly() or clear().
    const ProcessIdentity &of(const ProcessFacts &process, const DesktopIndex &index);

    /// Forgets the processes that are no more.
    void keepOnly(const std::unordered_map<qint32, ProcessFacts> &processes);

    /// The desktop's entries have changed.
    void clear() { m_known.clear(); }

private:
    struct Known
    {
        quint64 reading = 0;
        ProcessIdentity identity;
    };

    std::unordered_map<qint32, Known> m_known;
};
