#pragma once

#include <chrono>
#include <optional>
#include <string_view>

/// How long a header Retry-After asks to wait, by its seconds or its date (as in "Sun, 06 Nov 1994 08:49:37
/// GMT"): 0 to a day, which stands for all that is longer. None where it makes no sense.
std::optional<std::chrono::seconds> retryAfter(std::string_view header, std::chrono::sys_seconds now);
