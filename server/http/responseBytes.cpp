#include "responseBytes.h"

#include <algorithm>
#include <array>
#include <boost/beast/http/status.hpp>
#include <boost/url/grammar/ci_string.hpp>
#include <fmt/format.h>
#include <iterator>

namespace {

/// What every answer says by itself, or what would contradict how it is sent.
constexpr std::array<std::string_view, 11> ours = {
    "Connection", "Content-Length", "Content-Type", "Transfer-Encoding",      "Date",        "Server",
    "Trailer",    "Upgrade",        "Keep-Alive",   "X-Content-Type-Options", "X-Request-Id"};

bool isOurs(std::string_view name)
{
    return boost::urls::grammar::ci_is_equal(name, "Cache-Control") ||
           std::any_of(ours.begin(), ours.end(),
                       [name](auto own) { return boost::urls::grammar::ci_is_equal(name, own); });
}

bool isName(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '-' || character == '_';
    });
}

bool isValue(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char character) {
        return (character >= 0 && character < ' ' && character != '\t') || character == '\x7f';
    });
}

} // namespace

bool hasBody(unsigned status)
{
    return status != 204 && status != 304;
}

bool isSendable(const HttpResponse &response)
{
    return response.status >= 200 && response.status <= 599 && isValue(response.contentType) &&
           std::all_of(response.headers.begin(), response.headers.end(),
                       [](const auto &header) { return isName(header.first) && isValue(header.second); });
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
    constexpr std::array<const char *, 7> days = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array<const char *, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    return fmt::format("{}, {:02} {} {} {:02}:{:02}:{:02} GMT", days[static_cast<std::size_t>(parts.tm_wday)],
                       parts.tm_mday, months[static_cast<std::size_t>(parts.tm_mon)], parts.tm_year + 1900,
                       parts.tm_hour, parts.tm_min, parts.tm_sec);
}
