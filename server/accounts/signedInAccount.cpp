#include "signedInAccount.h"

#include <spdlog/spdlog.h>

boost::asio::awaitable<std::variant<Account, Refusal>> signedInAccount(Sessions &sessions,
                                                                       const HttpRequest &request)
{
    const auto found = co_await sessions.find(std::string(request.bearerToken()));
    if (!found) {
        spdlog::error("{}: a session could not be looked up: {}", request.path, found.error().reason);
        co_return refusals::unavailable();
    }
    if (!*found)
        co_return refusals::signInAgain();
    co_return **found;
}
