#pragma once

#include "Result.h"

#include <boost/asio/awaitable.hpp>
#include <string>

/// One message to one address.
struct Mail
{
    std::string to; ///< has passed mailAddress()
    std::string subject;
    std::string text;
    std::string html;
};

class Mailer
{
public:
    virtual ~Mailer() = default;

    /// Ends once the mail server has taken the message over.
    virtual boost::asio::awaitable<Result<>> send(Mail mail) = 0;
};
