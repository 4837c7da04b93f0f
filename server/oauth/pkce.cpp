#include "pkce.h"

#include "secrets.h"

std::string codeChallenge(std::string_view verifier)
{
    return sha256Text(verifier);
}
