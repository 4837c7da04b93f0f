// What routes see of a request, and how a refusal reads.
#include "Http.h"
#include "HttpClient.h"
#include "Router.h"
#include "httpRefusals.h"
#include "responseBytes.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>

namespace {

HttpRequest requestFor(std::string method, std::string path)
{
    HttpRequest request;
    request.method = std::move(method);
    request.path = std::move(path);
    return request;
}

HttpResponse answer(const Router &router, const HttpRequest &request)
{
    boost::asio::io_context context;
    std::optional<HttpResponse> response;
    boost::asio::co_spawn(
        context, router.answer(request),
        [&response](const std::exception_ptr &, HttpResponse made) { response = std::move(made); });
    context.run();
    return response.value();
}

Router sampleRoutes()
{
    Router router;
    router.add("GET", "/a", [](const HttpRequest &request) -> boost::asio::awaitable<HttpResponse> {
        co_return HttpResponse{200, "text/plain", "a by " + request.method, {}};
    });
    router.add("POST", "/a", [](const HttpRequest &) -> boost::asio::awaitable<HttpResponse> {
        co_return HttpResponse{201, "text/plain", "made", {}};
    });
    router.add("POST", "/throws", [](const HttpRequest &) -> boost::asio::awaitable<HttpResponse> {
        throw std::runtime_error("it fell over");
        co_return HttpResponse();
    });
    return router;
}

} // namespace

TEST(HttpRequest, findsTheFirstHeaderOfANameInAnyCase)
{
    HttpRequest request;
    request.headers = {{"X-One", "1"}, {"x-one", "2"}};
    EXPECT_EQ(request.header("x-ONE"), "1");
    EXPECT_EQ(request.header("X-On"), "");
    HttpAnswer answerOfOther;
    answerOfOther.headers = {{"Content-Type", "a/b"}};
    EXPECT_EQ(answerOfOther.header("content-type"), "a/b");
}

TEST(HttpRequest, hasTheBearerToken)
{
    const auto tokenOf = [](const char *value) {
        HttpRequest request;
        request.headers = {{"authorization", value}};
        return std::string(request.bearerToken());
    };
    EXPECT_EQ(tokenOf("Bearer abc-_123"), "abc-_123");
    EXPECT_EQ(tokenOf("bearer  abc"), "abc");
    for (const auto *wrong : {"", "Bearer", "Bearer ", "Basic abc", "Bearerabc", "Bearer a b", "Bearer a,b"})
        EXPECT_EQ(tokenOf(wrong), "") << wrong;
    EXPECT_EQ(HttpRequest().bearerToken(), "");
}

TEST(HttpRequest, countsAnIpv6ClientByItsNetwork)
{
    HttpRequest request;
    request.clientAddress = "2001:db8:1:2:3:4:5:6";
    EXPECT_EQ(request.clientNetwork(), "2001:db8:1:2::/64");
    request.clientAddress = "203.0.113.7";
    EXPECT_EQ(request.clientNetwork(), "203.0.113.7");
}

TEST(Refusal, isASentenceInTheLanguageOfTheRequest)
{
    HttpRequest request;
    auto response = refuse(request, refusals::tooMany(std::chrono::seconds(7)));
    EXPECT_EQ(response.status, 429U);
    EXPECT_EQ(response.contentType, "text/plain; charset=utf-8");
    EXPECT_EQ(response.body, "Too many attempts. Wait a little and try again.");
    EXPECT_EQ(response.headers, (HttpHeaders{{"Retry-After", "7"}}));
    request.language = Language::Russian;
    request.wantsJsonErrors = true;
    response = refuse(request, refusals::notFound());
    EXPECT_EQ(response.contentType, "application/json");
    EXPECT_EQ(response.body, R"({"error":"По этому адресу ничего нет. Обнови Quorvel и попробуй ещё раз."})");
    EXPECT_TRUE(response.headers.empty());
}

TEST(Router, answersByPathAndMethod)
{
    const auto router = sampleRoutes();
    EXPECT_EQ(answer(router, requestFor("GET", "/a")).body, "a by GET");
    EXPECT_EQ(answer(router, requestFor("POST", "/a")).status, 201U);
    EXPECT_EQ(answer(router, requestFor("HEAD", "/a")).body, "a by HEAD");
}

TEST(Router, tellsWhichMethodsAPathHas)
{
    const auto router = sampleRoutes();
    const auto response = answer(router, requestFor("DELETE", "/a"));
    EXPECT_EQ(response.status, 405U);
    EXPECT_EQ(response.headers, (HttpHeaders{{"Allow", "GET, HEAD, POST"}}));
    EXPECT_EQ(answer(router, requestFor("HEAD", "/throws")).headers, (HttpHeaders{{"Allow", "POST"}}));
}

TEST(Router, knowsNoPathButItsOwn)
{
    const auto router = sampleRoutes();
    for (const auto *path :
         {"", "/", "/A", "/a/", "//a", "/./a", "/b/../a", "/%61", "/a%2f", "/a;b", "\\a", "/a%00"}) {
        EXPECT_EQ(answer(router, requestFor("GET", path)).status, 404U) << path;
        EXPECT_EQ(router.routeName(path), "other") << path;
    }
    EXPECT_EQ(router.routeName("/a"), "/a");
}

TEST(Router, answersUnavailableWhereAHandlerThrows)
{
    const auto response = answer(sampleRoutes(), requestFor("POST", "/throws"));
    EXPECT_EQ(response.status, 503U);
    EXPECT_EQ(response.body, refusals::unavailable().sentence.english);
}

TEST(ResponseBytes, haveTheDateAsTheStandardWritesIt)
{
    EXPECT_EQ(httpDate(784111777), "Sun, 06 Nov 1994 08:49:37 GMT"); // RFC 9110, chapter 5.6.7
}

TEST(ResponseBytes, letNoHandlerSayWhatIsOurs)
{
    const HttpResponse response{
        200, "text/plain", "ab", {{"content-length", "9"}, {"Cache-Control", "public"}, {"X-A", "b"}}};
    std::string bytes;
    appendHead(bytes, response, {"id", "now", false, false});
    EXPECT_EQ(
        bytes,
        "HTTP/1.1 200 OK\r\nServer: quorvel\r\nDate: now\r\nX-Request-Id: id\r\nCache-Control: no-store\r\n"
        "X-Content-Type-Options: nosniff\r\nContent-Type: text/plain\r\nContent-Length: 2\r\nX-A: b\r\n\r\n");
}

TEST(ResponseBytes, areNeverSplitByAHandlersValue)
{
    for (const std::string &value : {std::string("a\r\nX: y"), std::string("a\nb"), std::string("a\0b", 3)}) {
        EXPECT_FALSE(isSendable({200, "text/plain", "", {{"X-A", value}}}));
        EXPECT_FALSE(isSendable({200, "text/plain", "", {{value, "a"}}}));
        EXPECT_FALSE(isSendable({200, value, "", {}}));
    }
    EXPECT_FALSE(isSendable({200, "text/plain", "", {{"", "a"}}}));
    EXPECT_FALSE(isSendable({199, "text/plain", "", {}}));
    EXPECT_FALSE(isSendable({600, "text/plain", "", {}}));
    EXPECT_TRUE(isSendable({302, "text/plain", "", {{"Location", "https://a.example/?b=c d"}}}));
}
