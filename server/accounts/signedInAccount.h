#pragma once

#include "Http.h"
#include "Sessions.h"

#include <boost/asio/awaitable.hpp>
#include <variant>

/// Whose session the request has, or why nobody's.
boost::asio::awaitable<std::variant<Account, Refusal>> signedInAccount(Sessions &sessions,
                                                                       const HttpRequest &request);
