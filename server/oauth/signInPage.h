#pragma once

#include "Http.h"
#include "Language.h"
#include "Refusal.h"

#include <string>
#include <string_view>

/// The page at the end of a sign-in: it hands the session to the desktop program by itself, and by a link
/// where the browser does not.
HttpResponse signedInPage(Language language, std::string_view session, std::string_view email,
                          std::string_view provider);

/// The same page for a sign-in that did not work, with the refusal's sentence and status.
HttpResponse faultPage(Language language, const Refusal &refusal);
