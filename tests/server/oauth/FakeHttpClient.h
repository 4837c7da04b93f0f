#pragma once

#include "HttpClient.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// Answers as the test says, by address.
class FakeHttpClient : public HttpClient
{
public:
    using Answer = std::function<boost::asio::awaitable<Result<HttpAnswer>>(HttpCall)>;

    void answer(const std::string &url, unsigned status, const std::string &body)
    {
        m_answers[url] = [status, body](HttpCall) -> boost::asio::awaitable<Result<HttpAnswer>> {
            HttpAnswer answer{status, {{"Content-Type", "application/json"}}, body};
            co_return Result<HttpAnswer>(std::move(answer));
        };
    }
    void fail(const std::string &url, const std::string &reason)
    {
        m_answers[url] = [reason](HttpCall) -> boost::asio::awaitable<Result<HttpAnswer>> {
            Failure failure{reason};
            co_return Result<HttpAnswer>(std::move(failure));
        };
    }
    void answer(const std::string &url, Answer answer) { m_answers[url] = std::move(answer); }

    boost::asio::awaitable<Result<HttpAnswer>> send(HttpCall call) override
    {
        calls.push_back(call);
        const auto found = m_answers.find(call.url);
        if (found == m_answers.end()) {
            Failure failure{"nobody answers"};
            co_return Result<HttpAnswer>(std::move(failure));
        }
        co_return co_await found->second(std::move(call));
    }

    /// How often that address was asked.
    std::size_t count(const std::string &url) const
    {
        return static_cast<std::size_t>(
            std::count_if(calls.begin(), calls.end(), [&](const HttpCall &call) { return call.url == url; }));
    }
    /// The last call of that address.
    const HttpCall &last(const std::string &url) const
    {
        return *std::find_if(calls.rbegin(), calls.rend(),
                             [&](const HttpCall &call) { return call.url == url; });
    }

    std::vector<HttpCall> calls;

private:
    std::map<std::string, Answer> m_answers;
};
