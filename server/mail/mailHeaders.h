#pragma once

#include "MailSender.h"
#include "Mailer.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

/// A header's free text: as it is where that is plain ASCII and short, else as encoded words (RFC 2047) on
/// lines of at most 78 characters.
std::string headerText(std::string_view text);

/// "Sat, 21 Nov 2026 19:12:00 +0000"
std::string mailDate(std::chrono::sys_seconds time);

/// All headers of a message but those that say how its body is written, each "Name: value" without the end of
/// its line. Every text has been checked: none has control characters.
std::vector<std::string> mailHeaders(const MailSender &from, const Mail &mail, std::chrono::sys_seconds now);
