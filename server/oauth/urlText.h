#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// "name=value&name=value", all percent-encoded: a query, or a body of application/x-www-form-urlencoded.
std::string formText(std::initializer_list<std::pair<std::string_view, std::string_view>> fields);

/// The address with that query behind what query it has.
std::string withQuery(std::string_view address, std::string_view query);

/// The fields of a query as forms write it, in their order; a plus sign is a space. None where a percent sign
/// begins no byte, a value is not UTF-8 or has control characters, or a name stands there twice.
std::optional<std::vector<std::pair<std::string, std::string>>> queryFields(std::string_view query);
