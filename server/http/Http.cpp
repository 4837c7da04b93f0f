#include "Http.h"

#include "HttpClient.h"
#include "clientAddresses.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <boost/url/grammar/ci_string.hpp>

namespace {

std::string_view firstOf(const HttpHeaders &headers, std::string_view name)
{
    for (const auto &[header, value] : headers) {
        if (boost::urls::grammar::ci_is_equal(header, name))
            return value;
    }
    return {};
}

} // namespace

std::string_view knownMethod(std::string_view method)
{
    for (const std::string_view known : {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"}) {
        if (method == known)
            return known;
    }
    return {};
}

bool areSendable(const HttpHeaders &headers)
{
    return std::all_of(headers.begin(), headers.end(), [](const auto &header) {
        return isHttpToken(header.first) && isHeaderValue(header.second);
    });
}

std::string_view HttpRequest::header(std::string_view name) const
{
    return firstOf(headers, name);
}

std::string_view HttpRequest::bearerToken() const
{
    constexpr std::string_view scheme = "Bearer ";
    auto value = header("Authorization");
    if (!boost::urls::grammar::ci_is_equal(value.substr(0, scheme.size()), scheme))
        return {};
    value.remove_prefix(scheme.size());
    value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
    return value.find_first_of(" \t,") == std::string_view::npos ? value : std::string_view();
}

std::string HttpRequest::clientNetwork() const
{
    return networkOf(clientAddress);
}

std::string_view HttpAnswer::header(std::string_view name) const
{
    return firstOf(headers, name);
}

void addRetryAfter(HttpResponse &response, const Refusal &refusal)
{
    if (refusal.retryAfter.count() > 0)
        response.headers.emplace_back("Retry-After", std::to_string(refusal.retryAfter.count()));
}

HttpResponse refuse(const HttpRequest &request, const Refusal &refusal)
{
    HttpResponse response{refusal.status, "text/plain; charset=utf-8", {}, {}};
    const auto sentence = refusal.sentence.in(request.language);
    if (request.wantsJsonErrors) {
        response.contentType = "application/json";
        response.body = boost::json::serialize(boost::json::object{{"error", sentence}});
    } else {
        response.body = sentence;
    }
    addRetryAfter(response, refusal);
    return response;
}
