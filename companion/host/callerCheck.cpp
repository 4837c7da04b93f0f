#include "callerCheck.h"

#include "companionIdentity.h"

#include <string>

bool startedForOurExtension(const std::vector<std::string_view> &arguments)
{
    if (arguments.empty())
        return false;
    if (arguments[0] == std::string("chrome-extension://") + chromiumExtensionId + "/")
        return true;
    return arguments.size() == 2 && arguments[0].starts_with('/') && arguments[1] == firefoxExtensionId;
}
