#include "ProcessIdentities.h"

#include "sessionParts.h"

const ProcessIdentity &ProcessIdentities::of(const ProcessFacts &process, const DesktopIndex &index)
{
    auto &known = m_known[process.id];
    if (known.reading != process.reading || process.reading == 0) {
        known = {process.reading, {isSessionPart(process), {}, {}}};
        if (!known.identity.sessionPart) {
            known.identity.match = matchProcess(process, index);
            known.identity.scope = matchScope(process, index);
        }
    }
    return known.identity;
}

void ProcessIdentities::keepOnly(const std::unordered_map<qint32, ProcessFacts> &processes)
{
    if (m_known.size() > processes.size())
        std::erase_if(m_known, [&](const auto &known) { return !processes.contains(known.first); });
}
