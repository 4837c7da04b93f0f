// What any client may send, read whole and in pieces, through to a route that reads JSON. The first byte of
// an input gives the sizes of the pieces; the rest is what comes over the connection.
#include "RequestReader.h"
#include "Router.h"
#include "httpRefusals.h"
#include "require.h"
#include "responseBytes.h"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <cstdint>
#include <vector>

namespace {

constexpr RequestLimits limits{1024, 256, 512};

/// What came out of the reader.
struct Reading
{
    std::vector<std::string> requests;
    bool isRefused = false;

    bool operator==(const Reading &) const = default;
};

boost::asio::awaitable<HttpResponse> readJson(const HttpRequest &request)
{
    boost::system::error_code error;
    const auto value = boost::json::parse(request.body, error);
    if (error)
        co_return refuse(request, refusals::badRequest());
    co_return HttpResponse{200, "application/json", boost::json::serialize(value), {}};
}

HttpResponse answer(const HttpRequest &request)
{
    static const auto router = [] {
        Router made;
        made.add("POST", "/json", readJson);
        made.add("GET", "/json", readJson);
        return made;
    }();
    boost::asio::io_context context;
    HttpResponse response{0, {}, {}, {}};
    boost::asio::co_spawn(context, router.answer(request),
                          [&response](const std::exception_ptr &problem, HttpResponse made) {
                              require(!problem, "a route answers");
                              response = std::move(made);
                          });
    context.run();
    return response;
}

std::string described(HttpRequest &request)
{
    require(request.path.starts_with('/') &&
                request.path.size() + request.query.size() <= limits.longestTarget,
            "a target keeps to its form");
    require(request.body.size() <= limits.largestBody, "a body keeps to its limit");
    std::size_t size = 0;
    auto text = request.method + ' ' + request.path + '?' + request.query;
    for (const auto &[name, value] : request.headers) {
        size += name.size() + value.size();
        text += '\n' + name + ": " + value;
        require(value.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos,
                "a header is one line");
    }
    require(size <= limits.largestHead, "a head keeps to its limit");
    const auto response = answer(request);
    require(response.status >= 200 && response.status < 500 && isSendable(response),
            "a route answers what can be sent");
    return text + "\n\n" + request.body;
}

/// `pieces` is the start of a row of piece sizes from 1 to 64 bytes; none for all at once.
Reading readAll(std::string_view bytes, std::uint32_t pieces)
{
    RequestReader reader(limits);
    Reading reading;
    std::string waiting;
    while (!bytes.empty() && !reading.isRefused) {
        if (pieces != 0)
            pieces = pieces * 1664525 + 1013904223;
        const auto size =
            pieces == 0 ? bytes.size() : std::min<std::size_t>(1 + (pieces >> 26), bytes.size());
        waiting += bytes.substr(0, size);
        bytes.remove_prefix(size);
        for (bool isMore = true; isMore;) {
            const auto taken = reader.take(waiting);
            require(taken <= waiting.size(), "no more is taken than came");
            waiting.erase(0, taken);
            isMore = reader.state() == RequestReader::State::Whole;
            if (isMore) {
                reading.requests.push_back(described(reader.request()));
                reader.next();
            }
        }
        reading.isRefused = reader.state() == RequestReader::State::Refused;
        if (reading.isRefused)
            require(reader.refusal().status >= 400 && !reader.reason().empty(), "a refusal has a reason");
        else
            require(waiting.size() <= limits.largestHead + 4096, "little waits");
    }
    return reading;
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char *>(data) + 1, size - 1);
    RequestReader reader(limits);
    require(readAll(bytes, data[0]) == readAll(bytes, data[0] + 256U),
            "it does not matter how the bytes came");
    return 0;
}
