#pragma once

#include "Result.h"

#include <optional>
#include <string>
#include <string_view>

/// The bytes of 64 hexadecimal digits; none where it is something else.
std::optional<std::string> secretKeyFrom(std::string_view digits);

/// The key in that file, which is made with a new one, readable by its owner alone, where there is none. Two
/// instances that start together get the same one. Fails with a sentence for the operator.
Result<std::string> keptSecretKey(const std::string &path);
