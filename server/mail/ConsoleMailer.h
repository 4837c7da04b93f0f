#pragma once

#include "Mailer.h"

/// For a machine without a mail server: what would be sent stands on standard output.
class ConsoleMailer : public Mailer
{
public:
    boost::asio::awaitable<Result<>> send(Mail mail) override;
};
