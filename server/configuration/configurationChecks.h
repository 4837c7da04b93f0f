#pragma once

#include "Configuration.h"
#include "options.h"

/// The configuration that the settings make, with a sentence for each that makes no sense.
Configuration checkedConfiguration(const RawSettings &raw, std::vector<std::string> &problems);
