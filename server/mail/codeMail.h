#pragma once

#include "Language.h"
#include "Mailer.h"

#include <string>

/// The message with a sign-in code.
Mail codeMail(const std::string &to, const std::string &code, Language language);
