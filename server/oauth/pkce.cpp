#include "pkce.h"

#include "secrets.h"

std::string codeChallenge(std::string_view verifier)
{
    return base64url(sha256(verifier));
}
