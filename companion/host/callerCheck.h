#pragma once

#include <string_view>
#include <vector>

/// Whether a browser started the relay for our extension. `arguments` are the program's own, without its
/// name: in the Chromium family "chrome-extension://ID/" and whatever else; in Firefox the path of the host
/// manifest and the add-on's ID.
bool startedForOurExtension(const std::vector<std::string_view> &arguments);
