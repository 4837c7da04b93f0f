#pragma once

#include <string>
#include <string_view>

/// With every byte but letters, digits and "-._~" as %XX (RFC 3986, chapter 2).
std::string percentEncoded(std::string_view text);
