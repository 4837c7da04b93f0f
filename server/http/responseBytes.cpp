#include "responseBytes.h"

#include "textChecks.h"

#include <algorithm>
#include <array>
#include <boost/beast/http/status.hpp>
#include <boost/url/grammar/ci_string.hpp>
#include <fmt/chrono.h>
#include <iterator>

namespace {

/// What every answer says by itself, or what would contradict how it is sent.
constexpr std::array<std::string_view, 12> ours = {"Cache-Control",
                                                   "Connection",
                                                   "Content-Length",
                                                   "Content-Type",
                                                   "Transfer-Encoding",
                                                   "Date",
                                                   "Server",
                                                   "Trailer",
                                                   "Upgrade",
                                                   "Keep-Alive",
                                                   "X-Content-Type-Options",
                                                   "X-Request-Id"};

bool isOurs(std::string_view name)
{
    return std::any_of(ours.begin(), ours.end(),
                       [name](auto own) { return boost::urls::grammar::ci_is_equal(name, own); });
}

} // namespace

bool hasBody(unsigned status)
{
    return status != 204 && status != 304;
}

bool isSendable(const HttpResponse &response)
{
    return response.status >= 200 && response.status <= 599 && isHeaderValue(response.contentType) &&
           areSendable(response.headers);
}

void appendHead(std::string &bytes, const HttpResponse &response, const ResponseFrame &frame)
{
    const auto reason = boost::beast::http::obsolete_reason(
        boost::beast::http::int_to_status(static_cast<unsigned>(response.status)));
    auto end = std::back_inserter(bytes);
    fmt::format_to(end, "HTTP/1.1 {} {}\r\n", response.status,
                   std::string_view(reason.data(), reason.size()));
    bytes += "Server: quorvel\r\nDate: ";
    bytes += frame.date;
    bytes += "\r\nX-Request-Id: ";
    bytes += frame.requestId;
    bytes += "\r\nCache-Control: no-store\r\nX-Content-Type-Options: nosniff\r\n";
    if (hasBody(response.status)) {
        if (!response.contentType.empty()) {
            bytes += "Content-Type: ";
            bytes += response.contentType;
            bytes += "\r\n";
        }
        fmt::format_to(end, "Content-Length: {}\r\n", response.body.size());
    }
    if (frame.closesConnection)
        bytes += "Connection: close\r\n";
    else if (frame.namesKeepAlive)
        bytes += "Connection: keep-alive\r\n";
    for (const auto &[name, value] : response.headers) {
        if (isOurs(name))
            continue;
        bytes += name;
        bytes += ": ";
        bytes += value;
        bytes += "\r\n";
    }
    bytes += "\r\n";
}

std::string httpDate(std::time_t seconds)
{
    return fmt::format("{:%a, %d %b %Y %H:%M:%S} GMT", fmt::gmtime(seconds));
}
