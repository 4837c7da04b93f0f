#pragma once

#include <string_view>

/// One line on standard error, which browsers keep in their log.
void complain(std::string_view line);
