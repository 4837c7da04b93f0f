#pragma once

#include "Result.h"
#include "Router.h"

#include <boost/asio/awaitable.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace prometheus {
class Registry;
}

struct OperationSettings
{
    /// Who may read /metrics besides this machine itself: "10.0.0.0/8". All others are told that there is no
    /// such path.
    std::vector<std::string> metricsFrom;
    std::chrono::milliseconds readyFor{1'000};     ///< how long one answer of `isReady` serves
    std::chrono::milliseconds readyTimeout{2'000}; ///< after which it is taken for a no
};

/// Adds what operators and their programs ask: GET /healthz (the program runs), GET /readyz (`isReady` says
/// that it can work; asked once for all who ask at the same time) and GET /metrics. Fails where a network is
/// not understood. `registry` must outlive the router.
Result<> addOperationRoutes(Router &router, prometheus::Registry &registry,
                            std::function<boost::asio::awaitable<bool>()> isReady,
                            const OperationSettings &settings = {});
