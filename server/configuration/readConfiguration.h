#pragma once

#include "Configuration.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

/// What a configuration is read from. The environment counts more than the file.
struct ConfigurationSources
{
    std::optional<std::string> file; ///< its path
    std::map<std::string, std::string>
        environment; ///< of the process; what begins with QUORVEL_SERVER_ is ours
};

/// A configuration, or all that is wrong with it: one sentence each for the operator.
struct ConfigurationResult
{
    Configuration configuration;
    std::vector<std::string> problems; ///< empty where it can be used
};

ConfigurationResult readConfiguration(const ConfigurationSources &sources);

/// Every setting with its meaning and the value it has when nobody sets it, one a line.
std::string describeSettings();
