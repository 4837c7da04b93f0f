#pragma once

#include <string>
#include <string_view>

/// A text as it stands in HTML, between tags and in a value within either kind of quotation marks.
std::string htmlText(std::string_view text);
