#include "QuorvelConfig.h"

#include "builtInLists.h"
#include "textLists.h"

const QuorvelConfig &QuorvelConfig::defaults()
{
    static const QuorvelConfig built = [] {
        QuorvelConfig config;
        config.blockedApps = builtInBlockedApps();
        config.blockedDomains = builtInBlockedDomains();
        config.allowedStudyApps = builtInAllowedStudyApps();
        config.blocklistPresetVersion = builtInListsVersion;
        return config;
    }();
    return built;
}

QStringList mergedWithBuiltIn(const QStringList &current, const QStringList &builtIn)
{
    return removingDuplicates(current + builtIn);
}

QuorvelConfig withBuiltInBlocklists(QuorvelConfig config)
{
    const auto &defaults = QuorvelConfig::defaults();
    config.blockedApps = mergedWithBuiltIn(config.blockedApps, defaults.blockedApps);
    config.blockedDomains = mergedWithBuiltIn(config.blockedDomains, defaults.blockedDomains);
    config.blocklistPresetVersion = defaults.blocklistPresetVersion;
    return config;
}

bool needsBlocklistMigration(const QuorvelConfig &config)
{
    return config.blocklistPresetVersion < QuorvelConfig::defaults().blocklistPresetVersion;
}
