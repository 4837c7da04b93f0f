// What a real server answers to bytes that come over a real connection.
#include "ServerUnderTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace testing;

namespace {

boost::asio::awaitable<HttpResponse> echo(const HttpRequest &request)
{
    co_return HttpResponse{200,
                           "application/json",
                           request.method + " " + request.path + "?" + request.query + " " +
                               request.clientAddress + " " + request.body,
                           {}};
}

Router routes()
{
    Router router;
    router.add("GET", "/echo", echo);
    router.add("POST", "/echo", echo);
    return router;
}

} // namespace

TEST(HttpServer, answersARequest)
{
    const ServerUnderTest server(routes());
    ASSERT_TRUE(server.isStarted());
    const auto answer = server.answerTo("GET /echo?a=b HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(statusOf(answer), "200");
    EXPECT_EQ(bodyOf(answer), "GET /echo?a=b 127.0.0.1 ");
    EXPECT_EQ(headerOf(answer, "Content-Length"), "24");
    EXPECT_EQ(headerOf(answer, "Cache-Control"), "no-store");
    EXPECT_EQ(headerOf(answer, "X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(headerOf(answer, "Server"), "quorvel");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    EXPECT_THAT(headerOf(answer, "Date"), MatchesRegex("[A-Z][a-z]+, [0-9 ]+ [A-Z][a-z]+ 20.*GMT"));
    EXPECT_THAT(headerOf(answer, "X-Request-Id"), MatchesRegex("[0-9a-f]+"));
}

TEST(HttpServer, keepsTheConnectionAndAnswersRequestsThatComeTogetherInTheirOrder)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(
        "GET /echo?1 HTTP/1.1\r\nHost: a\r\n\r\nPOST /echo?2 HTTP/1.1\r\nHost: a\r\nContent-Type: "
        "application/json\r\nContent-Length: 2\r\n\r\n{}GET /echo?3 HTTP/1.1\r\nHost: a\r\n\r\nGET /ec");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?1 127.0.0.1 ");
    EXPECT_EQ(bodyOf(client.readAnswer()), "POST /echo?2 127.0.0.1 {}");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?3 127.0.0.1 ");
    client.send("ho?4 HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?4 127.0.0.1 ");
}
