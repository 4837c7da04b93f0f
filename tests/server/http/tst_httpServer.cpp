// What a real server answers to bytes that come over a real connection.
#include "CapturedLog.h"
#include "ServerUnderTest.h"

#include <atomic>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/resource.h>

using namespace std::chrono_literals;
using namespace testing;
using boost::asio::awaitable;

namespace {

awaitable<HttpResponse> echo(const HttpRequest &request)
{
    auto text = request.method + " " + request.path + "?" + request.query + " " + request.clientAddress +
                " " + request.body;
    co_return HttpResponse{200, "text/plain", std::move(text), {}};
}

/// How far a handler has come that waits until it is let go.
struct Gate
{
    std::atomic<bool> isEntered = false;
    std::atomic<bool> isLetGo = false;
    std::atomic<bool> isLeft = false;
    std::atomic<bool> isCancelled = false;

    HttpHandler handler()
    {
        return [this](const HttpRequest &request) -> awaitable<HttpResponse> {
            boost::asio::steady_timer timer(co_await boost::asio::this_coro::executor);
            isEntered = true;
            try {
                while (!isLetGo) {
                    timer.expires_after(1ms);
                    co_await timer.async_wait(boost::asio::use_awaitable);
                }
            } catch (const boost::system::system_error &) {
                isCancelled = true;
                throw;
            }
            isLeft = true;
            co_return HttpResponse{200, "text/plain", "let go " + request.path, {}};
        };
    }
};

Router routes()
{
    Router router;
    router.add("GET", "/echo", echo);
    router.add("POST", "/echo", echo);
    router.add("GET", "/splits", [](const HttpRequest &) -> awaitable<HttpResponse> {
        co_return HttpResponse{200, "text/plain", "", {{"Location", "a\r\nX-Made: up"}}};
    });
    router.add("GET", "/throws", [](const HttpRequest &) -> awaitable<HttpResponse> {
        throw std::runtime_error("it fell over");
        co_return HttpResponse();
    });
    router.add("GET", "/nothing", [](const HttpRequest &) -> awaitable<HttpResponse> {
        co_return HttpResponse{204, "", "", {}};
    });
    router.add("GET", "/large", [](const HttpRequest &) -> awaitable<HttpResponse> {
        co_return HttpResponse{200, "text/plain", std::string(12'000'000, 'x'), {}};
    });
    return router;
}

Router gated(Gate &gate)
{
    auto router = routes();
    router.add("GET", "/gate", gate.handler());
    return router;
}

std::string get(const std::string &target, const std::string &headers = "")
{
    return "GET " + target + " HTTP/1.1\r\nHost: a\r\n" + headers + "\r\n";
}

std::string post(const std::string &target, const std::string &body, const std::string &headers = "")
{
    return "POST " + target + " HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n" + headers + "\r\n" + body;
}

const std::string closing = "Connection: close\r\n";

/// Waits until it holds; false where it does not within 20 s.
bool comesTrue(const std::function<bool()> &condition)
{
    for (int tries = 0; tries < 4000; ++tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

bool comesTrue(const std::atomic<bool> &flag)
{
    return comesTrue([&flag] { return flag.load(); });
}

} // namespace

TEST(HttpServer, answersARequest)
{
    const ServerUnderTest server(routes());
    ASSERT_TRUE(server.isStarted());
    const auto answer = server.answerTo(get("/echo?a=b", closing));
    EXPECT_EQ(statusOf(answer), "200");
    EXPECT_EQ(bodyOf(answer), "GET /echo?a=b 127.0.0.1 ");
    EXPECT_EQ(headerOf(answer, "Content-Length"), "24");
    EXPECT_EQ(headerOf(answer, "Content-Type"), "text/plain");
    EXPECT_EQ(headerOf(answer, "Cache-Control"), "no-store");
    EXPECT_EQ(headerOf(answer, "X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(headerOf(answer, "Server"), "quorvel");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    EXPECT_THAT(headerOf(answer, "Date"), MatchesRegex("[A-Z][a-z]+, [0-9]+ [A-Z][a-z]+ 20.*GMT"));
    EXPECT_THAT(headerOf(answer, "X-Request-Id"), MatchesRegex("[0-9a-f]+"));
    EXPECT_EQ(headerOf(answer, "X-Request-Id").size(), 16U);
}

TEST(HttpServer, keepsTheConnectionAndAnswersRequestsThatComeTogetherInTheirOrder)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(get("/echo?1") + post("/echo?2", "{}") + get("/echo?3") + "GET /ec");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?1 127.0.0.1 ");
    EXPECT_EQ(bodyOf(client.readAnswer()), "POST /echo?2 127.0.0.1 {}");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?3 127.0.0.1 ");
    client.send("ho?4 HTTP/1.1\r\nHost: a\r\n\r\n");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo?4 127.0.0.1 ");
}

TEST(HttpServer, answersWhatComesByteByByte)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    for (const char byte : post("/echo", R"({"a":1})"))
        client.send(std::string(1, byte));
    EXPECT_EQ(bodyOf(client.readAnswer()), R"(POST /echo? 127.0.0.1 {"a":1})");
}

TEST(HttpServer, answersAClientThatHasEndedSending)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(get("/echo"));
    client.endSending();
    EXPECT_EQ(statusOf(client.readToEnd()), "200");
}

TEST(HttpServer, answersHeadWithoutABody)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send("HEAD /echo HTTP/1.1\r\nHost: a\r\n\r\nHEAD /none HTTP/1.1\r\nHost: a\r\n\r\n" +
                get("/echo", closing));
    const auto answer = client.readAnswer(false);
    EXPECT_EQ(statusOf(answer), "200");
    EXPECT_EQ(headerOf(answer, "Content-Length"), "22");
    EXPECT_EQ(statusOf(client.readAnswer(false)), "404");
    EXPECT_EQ(bodyOf(client.readAnswer()), "GET /echo? 127.0.0.1 ");
}

TEST(HttpServer, sendsNoLengthWhereThereIsNoBody)
{
    const ServerUnderTest server(routes());
    const auto answer = server.answerTo(get("/nothing", closing));
    EXPECT_EQ(statusOf(answer), "204");
    EXPECT_EQ(headerOf(answer, "Content-Length"), "(none)");
    EXPECT_EQ(headerOf(answer, "Content-Type"), "(none)");
}

TEST(HttpServer, servesClientsOfHttp10)
{
    const ServerUnderTest server(routes());
    auto answer = server.answerTo("GET /echo HTTP/1.0\r\n\r\n");
    EXPECT_EQ(statusOf(answer), "200");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    auto client = server.client();
    client.send("GET /echo HTTP/1.0\r\nConnection: keep-alive\r\n\r\n");
    EXPECT_EQ(headerOf(client.readAnswer(), "Connection"), "keep-alive");
    client.send("GET /echo HTTP/1.0\r\n\r\n");
    EXPECT_EQ(statusOf(client.readToEnd()), "200");
}

TEST(HttpServer, saysThatItKnowsNoSuchPathOrMethod)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(get("/echo/", "Accept-Language: ru\r\n") + get("/../echo", "Accept: application/json\r\n") +
                "DELETE /echo HTTP/1.1\r\nHost: a\r\n\r\n");
    auto answer = client.readAnswer();
    EXPECT_EQ(statusOf(answer), "404");
    EXPECT_EQ(headerOf(answer, "Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(bodyOf(answer), "По этому адресу ничего нет. Обнови Quorvel и попробуй ещё раз.");
    answer = client.readAnswer();
    EXPECT_EQ(statusOf(answer), "404");
    EXPECT_EQ(headerOf(answer, "Content-Type"), "application/json");
    EXPECT_EQ(bodyOf(answer),
              R"({"error":"There is nothing at this address. Update Quorvel and try again."})");
    answer = client.readAnswer();
    EXPECT_EQ(statusOf(answer), "405");
    EXPECT_EQ(headerOf(answer, "Allow"), "GET, HEAD, POST");
}

TEST(HttpServer, readsNothingBehindARequestItRefuses)
{
    const ServerUnderTest server(routes());
    const std::string smuggled = get("/echo?smuggled", closing);
    for (const std::string &bytes :
         {post("/echo", "{}", "Transfer-Encoding: chunked\r\n"), post("/echo", "{}", "Content-Length: 0\r\n"),
          get("/echo", "X: y\r\n z\r\n"), get("http://a/echo"),
          std::string("GET /echo HTTP/1.1\nHost: a\n\n"),
          std::string("CONNECT a:80 HTTP/1.1\r\nHost: a\r\n\r\n"),
          std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"), post("/echo", std::string(70'000, ' ')),
          get("/" + std::string(9'000, 'a')), get("/echo", "X: " + std::string(20'000, 'a') + "\r\n"),
          post("/echo", "{}", "Expect: more\r\n"),
          std::string("POST /echo HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n"
                      "Transfer-Encoding: chunked\r\n\r\nz\r\n{}\r\n0\r\n\r\n")}) {
        const auto answer = server.answerTo(bytes + smuggled);
        EXPECT_THAT(statusOf(answer), AnyOf("400", "413", "414", "417", "431", "501", "505"))
            << bytes.substr(0, 200);
        EXPECT_EQ(headerOf(answer, "Connection"), "close");
        EXPECT_THAT(bodyOf(answer), EndsWith(".")) << "one sentence, and nothing behind it";
        EXPECT_THAT(answer, Not(HasSubstr("smuggled")));
    }
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"GET\",route=\"/echo\",status=\"200\"}"),
              "(none)");
}

TEST(HttpServer, letsAClientThatIsStillSendingReadWhyItIsRefused)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(
        "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\nContent-Length: 900000\r\n\r\n");
    client.send(std::string(900'000, ' '));
    const auto answer = client.readToEnd();
    EXPECT_EQ(statusOf(answer), "413");
    EXPECT_EQ(bodyOf(answer), "The request is too large. Shorten the text and try again.");
}

TEST(HttpServer, saysContinueToAClientThatWaitsForIt)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send("POST /echo HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\nExpect: 100-continue\r\n"
                "Content-Length: 2\r\n\r\n");
    EXPECT_EQ(client.readAnswer(), "HTTP/1.1 100 Continue\r\n\r\n");
    client.send("{}" + post("/echo?2", "[]", "Expect: 100-continue\r\n"));
    EXPECT_EQ(bodyOf(client.readAnswer()), "POST /echo? 127.0.0.1 {}");
    EXPECT_EQ(bodyOf(client.readAnswer()), "POST /echo?2 127.0.0.1 []") << "which came with its body";
    client.send("POST /echo HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\nExpect: 100-continue\r\n"
                "Content-Length: 65537\r\n\r\n");
    EXPECT_EQ(statusOf(client.readAnswer()), "413") << "rather than to go on";
}

TEST(HttpServer, waitsForAHeadNoLongerThanItsTime)
{
    HttpServerSettings settings;
    settings.headTimeout = 100ms;
    const ServerUnderTest server(routes(), settings);
    auto client = server.client();
    client.send("GET /echo HTTP/1.1\r\nAccept-Language: ru\r\n");
    auto answer = client.readToEnd();
    EXPECT_EQ(statusOf(answer), "408");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    auto dripping = server.client();
    dripping.send("GET /echo HTTP/1.1\r\nX: ");
    while (!dripping.hasCome(10))
        ASSERT_TRUE(dripping.send("a"));
    EXPECT_EQ(statusOf(dripping.readToEnd()), "408");
    EXPECT_EQ(server.figure("quorvel_http_refused_total{reason=\"slow\"}"), "2");
    EXPECT_EQ(server.client().readToEnd(), "") << "who says nothing is told nothing";
}

TEST(HttpServer, waitsForABodyNoLongerThanItsTime)
{
    HttpServerSettings settings;
    settings.bodyTimeout = 100ms;
    const ServerUnderTest server(routes(), settings);
    auto client = server.client();
    client.send(
        "POST /echo HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\nContent-Length: 9000\r\n\r\n");
    while (!client.hasCome(10))
        ASSERT_TRUE(client.send(" "));
    EXPECT_EQ(statusOf(client.readToEnd()), "408");
}

TEST(HttpServer, endsAConnectionThatAsksNothingMore)
{
    HttpServerSettings settings;
    settings.idleTimeout = 50ms;
    const ServerUnderTest server(routes(), settings);
    auto client = server.client();
    client.send(get("/echo"));
    EXPECT_EQ(statusOf(client.readAnswer()), "200");
    EXPECT_EQ(client.readToEnd(), "");
}

TEST(HttpServer, endsAConnectionWhoseClientDoesNotRead)
{
    HttpServerSettings settings;
    settings.writeTimeout = 100ms;
    const ServerUnderTest server(routes(), settings);
    auto client = server.client();
    client.send(get("/large"));
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "1"; }));
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "0"; }));
    EXPECT_LT(client.readToEnd().size(), 12'000'000U);
}

TEST(HttpServer, sendsALargeAnswerWhole)
{
    const ServerUnderTest server(routes());
    EXPECT_EQ(bodyOf(server.answerTo(get("/large", closing))).size(), 12'000'000U);
}

TEST(HttpServer, answersForAHandlerThatTakesTooLong)
{
    Gate gate;
    HttpServerSettings settings;
    settings.handlerTimeout = 50ms;
    const ServerUnderTest server(gated(gate), settings);
    const auto answer = server.answerTo(get("/gate", "Accept-Language: ru\r\n") + get("/echo"));
    EXPECT_EQ(statusOf(answer), "504");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    EXPECT_EQ(bodyOf(answer), "Сервис не успел ответить. Попробуй ещё раз через минуту.");
    EXPECT_FALSE(gate.isLeft);
    gate.isLetGo = true;
    EXPECT_TRUE(comesTrue(gate.isLeft)) << "its work is not left half done";
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "0"; }));
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"GET\",route=\"/gate\",status=\"504\"}"),
              "1");
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"GET\",route=\"/gate\",status=\"200\"}"),
              "(none)")
        << "it is answered once";
}

TEST(HttpServer, letsAHandlerEndItsWorkWhoseClientHasGone)
{
    Gate gate;
    const ServerUnderTest server(gated(gate));
    {
        auto client = server.client();
        client.send(get("/gate"));
        ASSERT_TRUE(comesTrue(gate.isEntered));
        client.reset();
    }
    gate.isLetGo = true;
    EXPECT_TRUE(comesTrue(gate.isLeft));
    EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "0"; }));
}

TEST(HttpServer, outlivesClientsThatGoAnywhere)
{
    const ServerUnderTest server(routes());
    const auto whole = post("/echo", R"({"a":1})");
    for (std::size_t size = 0; size <= whole.size(); size += 7) {
        auto client = server.client();
        client.send(whole.substr(0, size));
        client.reset();
    }
    EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "0"; }));
}

TEST(HttpServer, answersWhatIsUnderWayWhenItStops)
{
    Gate gate;
    ServerUnderTest server(gated(gate));
    auto idle = server.client();
    idle.send(get("/echo"));
    EXPECT_EQ(statusOf(idle.readAnswer()), "200");
    auto asking = server.client();
    asking.send(get("/gate") + get("/echo"));
    ASSERT_TRUE(comesTrue(gate.isEntered));
    auto stopped = server.beginStop();
    EXPECT_EQ(idle.readToEnd(), "");
    EXPECT_FALSE(server.client().isConnected());
    EXPECT_EQ(stopped.wait_for(0s), std::future_status::timeout);
    gate.isLetGo = true;
    const auto answer = asking.readToEnd();
    EXPECT_EQ(bodyOf(answer), "let go /gate");
    EXPECT_EQ(headerOf(answer, "Connection"), "close");
    asking.disconnect();
    stopped.wait();
}

TEST(HttpServer, stopsInTimeWhateverAHandlerDoes)
{
    Gate gate;
    HttpServerSettings settings;
    settings.stopTimeout = 50ms;
    ServerUnderTest server(gated(gate), settings);
    auto client = server.client();
    client.send(get("/gate"));
    ASSERT_TRUE(comesTrue(gate.isEntered));
    server.stop();
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_TRUE(gate.isCancelled);
    EXPECT_FALSE(gate.isLeft);
}

TEST(HttpServer, canGoWhileHandlersWork)
{
    Gate gate;
    HttpServerSettings settings;
    settings.listen = {"127.0.0.1:0"};
    prometheus::Registry registry;
    boost::asio::io_context context;
    auto server = std::make_unique<HttpServer>(context, settings, gated(gate), registry);
    ASSERT_TRUE(server->start());
    RawClient client(server->ports().at(0));
    client.send(get("/gate"));
    while (!gate.isEntered)
        context.run_one();
    server.reset();
    context.poll();
    EXPECT_TRUE(gate.isCancelled);
    EXPECT_EQ(client.readToEnd(), "");
}

TEST(HttpServer, turnsConnectionsAwayBeyondItsLimits)
{
    HttpServerSettings settings;
    settings.mostConnections = 2;
    const ServerUnderTest server(routes(), settings);
    auto first = server.client();
    auto second = server.client();
    first.send(get("/echo"));
    second.send(get("/echo"));
    EXPECT_EQ(statusOf(first.readAnswer()), "200");
    EXPECT_EQ(statusOf(second.readAnswer()), "200");
    const auto answer = server.client().readToEnd();
    EXPECT_EQ(statusOf(answer), "503");
    EXPECT_EQ(headerOf(answer, "Retry-After"), "60");
    EXPECT_THAT(bodyOf(answer), HasSubstr("very busy"));
    EXPECT_EQ(server.figure("quorvel_http_refused_total{reason=\"connections\"}"), "1");
    first.disconnect();
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "1"; }));
    EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
}

TEST(HttpServer, limitsTheConnectionsOfOneAddressButNotOfAProxy)
{
    HttpServerSettings settings;
    settings.mostConnectionsPerAddress = 1;
    {
        const ServerUnderTest server(routes(), settings);
        auto first = server.client();
        first.send(get("/echo"));
        EXPECT_EQ(statusOf(first.readAnswer()), "200");
        EXPECT_EQ(statusOf(server.client().readToEnd()), "503");
        first.disconnect();
        EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "0"; }));
        EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
    }
    settings.trustedProxies = {"127.0.0.0/8"};
    const ServerUnderTest server(routes(), settings);
    auto first = server.client();
    first.send(get("/echo"));
    EXPECT_EQ(statusOf(first.readAnswer()), "200");
    EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
}

TEST(HttpServer, believesTheProxiesThatItTrusts)
{
    const auto forwarded =
        get("/echo", closing + "X-Forwarded-For: 1.1.1.1\r\nx-forwarded-for: 203.0.113.7, 127.0.0.9\r\n");
    const ServerUnderTest strange(routes());
    EXPECT_EQ(bodyOf(strange.answerTo(forwarded)), "GET /echo? 127.0.0.1 ");
    HttpServerSettings settings;
    settings.trustedProxies = {"127.0.0.0/8"};
    const ServerUnderTest trusting(routes(), settings);
    EXPECT_EQ(bodyOf(trusting.answerTo(forwarded)), "GET /echo? 203.0.113.7 ");
}

TEST(HttpServer, sendsNoAnswerThatAHandlersHeaderWouldSplit)
{
    const ServerUnderTest server(routes());
    const auto answer = server.answerTo(get("/splits", closing));
    EXPECT_EQ(statusOf(answer), "500");
    EXPECT_THAT(answer, Not(HasSubstr("X-Made")));
    EXPECT_EQ(statusOf(server.answerTo(get("/throws", closing))), "503");
}

TEST(HttpServer, holdsAThousandIdleConnections)
{
    HttpServerSettings settings;
    settings.mostConnectionsPerAddress = 2'000;
    const ServerUnderTest server(routes(), settings);
    rlimit files{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &files), 0);
    if (files.rlim_cur < 2'200) {
        files.rlim_cur = std::min<rlim_t>(2'200, files.rlim_max);
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &files), 0);
    }
    std::vector<RawClient> clients;
    for (int number = 0; number < 1'000; ++number)
        ASSERT_TRUE(clients.emplace_back(server.port()).isConnected());
    EXPECT_TRUE(comesTrue([&] { return server.figure("quorvel_http_connections") == "1000"; }));
    EXPECT_EQ(statusOf(server.answerTo(get("/echo", closing))), "200");
    clients.back().send(get("/echo"));
    EXPECT_EQ(statusOf(clients.back().readAnswer()), "200");
}

TEST(HttpServer, acceptsAgainOnceThereAreFilesToHave)
{
    const CapturedLog log;
    const ServerUnderTest server(routes());
    RawClient client;
    rlimit files{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &files), 0);
    auto few = files;
    const int firstFree = ::dup(0);
    ::close(firstFree);
    few.rlim_cur = static_cast<rlim_t>(firstFree);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    EXPECT_TRUE(client.connect(server.port()));
    EXPECT_TRUE(comesTrue([&] { return log.has("no connection can be accepted"); }));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &files), 0);
    client.send(get("/echo"));
    EXPECT_EQ(statusOf(client.readAnswer()), "200");
}

TEST(HttpServer, logsARequestWithoutWhatIsPersonalInIt)
{
    const CapturedLog log;
    std::string id;
    {
        const ServerUnderTest server(routes());
        auto client = server.client();
        client.send(
            post("/echo?code=secretQuery", R"("secretBody")", "Authorization: Bearer secretToken\r\n"));
        id = headerOf(client.readAnswer(), "X-Request-Id");
        client.send(get("/secretPath", closing));
        client.readToEnd();
    }
    EXPECT_THAT(log.text(), ContainsRegex("request id=" + id +
                                          " method=POST route=/echo status=200 ms=[0-9.]+ bytes=50\n"));
    EXPECT_THAT(log.text(), ContainsRegex("method=GET route=other status=404"));
    EXPECT_THAT(log.text(), Not(HasSubstr("secret")));
    EXPECT_THAT(log.text(), Not(HasSubstr("127.0.0.1")));
}

TEST(HttpServer, countsWhatItAnswers)
{
    const ServerUnderTest server(routes());
    auto client = server.client();
    client.send(get("/echo") + get("/echo") + get("/none") + "BREW /echo HTTP/1.1\r\nHost: a\r\n\r\n");
    client.readToEnd();
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"GET\",route=\"/echo\",status=\"200\"}"),
              "2");
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"GET\",route=\"other\",status=\"404\"}"),
              "1");
    EXPECT_EQ(server.figure("quorvel_http_requests_total{method=\"other\",route=\"other\",status=\"501\"}"),
              "1");
    EXPECT_EQ(server.figure("quorvel_http_request_seconds_count{route=\"/echo\"}"), "2");
    EXPECT_EQ(server.figure("quorvel_http_refused_total{reason=\"method\"}"), "1");
}

TEST(HttpServer, saysWhereItCannotListen)
{
    const ServerUnderTest other(routes());
    const auto taken = "127.0.0.1:" + std::to_string(other.port());
    const auto reasonFor = [](const std::vector<std::string> &listen,
                              const std::vector<std::string> &trusted = {}) {
        prometheus::Registry registry;
        boost::asio::io_context context;
        HttpServerSettings settings;
        settings.listen = listen;
        settings.trustedProxies = trusted;
        HttpServer server(context, settings, routes(), registry);
        const auto started = server.start();
        return started ? "" : started.error().reason;
    };
    EXPECT_EQ(reasonFor({"127.0.0.1:0", "127.0.0.1:0"}), "");
    EXPECT_THAT(reasonFor({"127.0.0.1:0", taken}), AllOf(HasSubstr(taken), HasSubstr("in use")));
    EXPECT_THAT(reasonFor({"192.0.2.1:8080"}), HasSubstr("192.0.2.1:8080"));
    for (const auto *wrong : {"", "8080", "127.0.0.1", "localhost:1", "127.0.0.1:", "127.0.0.1:65536",
                              "127.0.0.1:1x", "::1:80", "[127.0.0.1]:80"})
        EXPECT_THAT(reasonFor({wrong}), HasSubstr('"' + std::string(wrong) + '"'));
    EXPECT_EQ(reasonFor({}), "there is no address to listen on");
    EXPECT_THAT(reasonFor({"127.0.0.1:0"}, {"nginx"}), HasSubstr("\"nginx\""));
}
