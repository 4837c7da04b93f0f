#pragma once

#include "Language.h"

#include <chrono>

/// Why a request is not granted: the desktop program shows the sentence to the user as it is.
struct Refusal
{
    unsigned status = 500;              ///< of HTTP, 400 to 599
    LocalText sentence;                 ///< one plain sentence, with its full stop
    std::chrono::seconds retryAfter{0}; ///< 0: not said
};

namespace refusals {

/// Something of ours does not work: the database, a thread, a mail server.
Refusal unavailable();
/// The request is not understood: no JSON object, a field missing or of another kind.
Refusal badRequest();
/// No session, an unknown one or one that is over.
Refusal signInAgain();
/// Asked too often.
Refusal tooMany(std::chrono::seconds retryAfter);

} // namespace refusals
