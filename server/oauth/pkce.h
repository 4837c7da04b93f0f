#pragma once

#include <string>
#include <string_view>

/// What is shown of a verifier before it is given away: the method S256 of RFC 7636.
std::string codeChallenge(std::string_view verifier);
