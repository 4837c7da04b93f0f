#pragma once

#include "MailSender.h"
#include "SmtpMailer.h"

#include <atomic>
#include <chrono>

/// Hands one message to the mail server, and blocks until it has taken it over. Both addresses have been
/// checked. Fails after `deadline`, and soon after `isStopping` is set.
Result<> sendBySmtp(const SmtpSettings &settings, const MailSender &from, const Mail &mail,
                    std::chrono::steady_clock::time_point deadline, const std::atomic<bool> &isStopping);
