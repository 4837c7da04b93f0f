#pragma once

#include "HttpClient.h"

#include <memory>
#include <string>

/// Asks over the network, one connection a call. TLS is 1.2 or newer, and the other side's certificate must
/// be valid for the name that was asked for.
class BeastHttpClient : public HttpClient
{
public:
    /// `certificateAuthorities` is a PEM file in place of the system's, for tests and private networks. Fails
    /// where it cannot be read.
    static Result<std::unique_ptr<BeastHttpClient>> create(const std::string &certificateAuthorities = {});
    ~BeastHttpClient() override;

    /// Calls may be under way when the client goes.
    boost::asio::awaitable<Result<HttpAnswer>> send(HttpCall call) override;

private:
    struct State;
    explicit BeastHttpClient(std::shared_ptr<State> state);
    std::shared_ptr<State> m_state;
};
