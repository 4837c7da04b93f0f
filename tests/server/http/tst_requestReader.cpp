// What is a request, byte by byte, and what is refused.
#include "RequestReader.h"

#include <gtest/gtest.h>

namespace {

using State = RequestReader::State;

constexpr RequestLimits limits{1024, 200, 100};

/// The status of the refusal; 0 where there is none, 1 where more is awaited.
unsigned refusedWith(std::string_view bytes)
{
    RequestReader reader(limits);
    reader.take(bytes);
    if (reader.state() == State::Refused)
        return reader.refusal().status;
    return reader.state() == State::Whole ? 0 : 1;
}

std::string getRequest(const std::string &target, const std::string &headers = "")
{
    return "GET " + target + " HTTP/1.1\r\nHost: a\r\n" + headers + "\r\n";
}

std::string postRequest(const std::string &headers, const std::string &body = "")
{
    return "POST /a HTTP/1.1\r\nHost: a\r\nContent-Type: application/json\r\n" + headers + "\r\n" + body;
}

std::string chunked(const std::string &body)
{
    return postRequest("Transfer-Encoding: chunked\r\n", body);
}

} // namespace

TEST(RequestReader, readsARequest)
{
    RequestReader reader(limits);
    const auto bytes = getRequest(
        "/a/b?c=d?e", "Accept-Language: ru\r\nAccept: text/html, application/JSON;q=0.5\r\nX-A:  b \t\r\n");
    EXPECT_EQ(reader.take(bytes), bytes.size());
    ASSERT_EQ(reader.state(), State::Whole);
    const auto &request = reader.request();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.path, "/a/b");
    EXPECT_EQ(request.query, "c=d?e");
    EXPECT_EQ(request.header("x-a"), "b");
    EXPECT_EQ(request.language, Language::Russian);
    EXPECT_TRUE(request.wantsJsonErrors);
    EXPECT_TRUE(reader.keepsConnection());
}

TEST(RequestReader, takesNoMoreThanOneRequest)
{
    RequestReader reader(limits);
    const auto first = postRequest("Content-Length: 2\r\n", "{}");
    EXPECT_EQ(reader.take(first + getRequest("/b")), first.size());
    EXPECT_EQ(reader.request().body, "{}");
    reader.next();
    EXPECT_EQ(reader.take(getRequest("/b")), getRequest("/b").size());
    EXPECT_EQ(reader.request().path, "/b");
    EXPECT_EQ(reader.request().body, "");
}

TEST(RequestReader, readsChunks)
{
    RequestReader reader(limits);
    const auto bytes =
        chunked("3;a=\"b\"\r\n[1,\r\n0A\r\n2222222222\r\n1\r\n]\r\n0\r\nX-Forwarded-For: 1.2.3.4\r\n\r\n");
    EXPECT_EQ(reader.take(bytes), bytes.size());
    ASSERT_EQ(reader.state(), State::Whole);
    EXPECT_EQ(reader.request().body, "[1,2222222222]");
    EXPECT_EQ(reader.request().header("X-Forwarded-For"), "") << "a trailer is not a header";
}

TEST(RequestReader, takesOneEmptyLineBeforeARequest)
{
    RequestReader reader(limits);
    std::string waiting;
    for (const char byte : "\r\n" + getRequest("/a")) {
        ASSERT_EQ(reader.state(), State::Head);
        waiting += byte;
        waiting.erase(0, reader.take(waiting));
    }
    EXPECT_EQ(reader.state(), State::Whole) << "its halves may come one after the other";
    EXPECT_EQ(refusedWith("\r\n" + getRequest("/a")), 0U);
    EXPECT_EQ(refusedWith("\r\n\r\n" + getRequest("/a")), 400U);
}

TEST(RequestReader, knowsWhetherTheConnectionStays)
{
    const auto keeps = [](const std::string &bytes) {
        RequestReader reader(limits);
        reader.take(bytes);
        EXPECT_EQ(reader.state(), State::Whole) << bytes;
        return reader.keepsConnection();
    };
    EXPECT_TRUE(keeps(getRequest("/a")));
    EXPECT_FALSE(keeps(getRequest("/a", "Connection: x, Close\r\n")));
    EXPECT_FALSE(keeps("GET /a HTTP/1.0\r\n\r\n"));
    EXPECT_TRUE(keeps("GET /a HTTP/1.0\r\nConnection: keep-alive\r\n\r\n"));
}

TEST(RequestReader, refusesWhatTwoProgramsCouldReadInTwoWays)
{
    EXPECT_EQ(refusedWith(postRequest("Content-Length: 2\r\nTransfer-Encoding: chunked\r\n")), 400U);
    EXPECT_EQ(refusedWith(postRequest("Transfer-Encoding: chunked\r\nContent-Length: 2\r\n")), 400U);
    EXPECT_EQ(refusedWith(postRequest("Content-Length: 2\r\nContent-Length: 3\r\n", "{} ")), 400U);
    EXPECT_EQ(refusedWith(postRequest("Content-Length: 2\r\nContent-Length: 2\r\n", "{}")), 400U);
    for (const auto *length : {"2, 2", "+2", "-2", "0x2", "2 2", "", "99999999999999999999999", "2;"})
        EXPECT_EQ(refusedWith(postRequest("Content-Length: " + std::string(length) + "\r\n", "{}")), 400U)
            << length;
    EXPECT_EQ(refusedWith(
                  "POST /a HTTP/1.0\r\nTransfer-Encoding: chunked\r\nContent-Type: application/json\r\n\r\n"),
              400U);
    for (const auto *coding :
         {"gzip", "gzip, chunked", "chunked, chunked", "identity", "xchunked", "\"chunked\""})
        EXPECT_EQ(refusedWith(postRequest("Transfer-Encoding: " + std::string(coding) + "\r\n")), 501U)
            << coding;
    EXPECT_EQ(refusedWith(postRequest("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n")), 400U);
    EXPECT_EQ(refusedWith(postRequest("Transfer-Encoding : chunked\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "Host: b\r\n")), 400U);
    EXPECT_EQ(refusedWith("GET /a HTTP/1.1\r\n\r\n"), 400U);
    for (const auto *host : {"a b", "a/b", "a@b", "a,b", "a\\b", "a#b"})
        EXPECT_EQ(refusedWith("GET /a HTTP/1.1\r\nHost: " + std::string(host) + "\r\n\r\n"), 400U) << host;
    EXPECT_EQ(refusedWith("GET /a HTTP/1.1\r\nHost: [::1]:8080\r\n\r\n"), 0U);
}

TEST(RequestReader, refusesLinesThatEndOtherwise)
{
    EXPECT_EQ(refusedWith("GET /a HTTP/1.1\nHost: a\n\n"), 400U);
    EXPECT_EQ(refusedWith("GET /a HTTP/1.1\r\nHost: a\nX: y\r\n\r\n"), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "X: a\rb\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "X: a\r\n b\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "X: a\r\n\tb\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", std::string("X: a\0b\r\n", 8))), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "X\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", ": b\r\n")), 400U);
    EXPECT_EQ(refusedWith(getRequest("/a", "X Y: b\r\n")), 400U);
    EXPECT_EQ(refusedWith("\x16\x03\x01\x02\x00\x01"), 400U) << "TLS is seen at its first bytes";
}

TEST(RequestReader, refusesTargetsThatAreNotAPath)
{
    for (const auto *target :
         {"http://a/a", "a:443", "*", "a", "?a", "/a#b", "/a\x7f", "/a\tb", "/\xd0\xb0", "/a b"})
        EXPECT_EQ(refusedWith(getRequest(target)), 400U) << target;
    EXPECT_EQ(refusedWith(getRequest(std::string("/a\0b", 4))), 400U);
    EXPECT_EQ(refusedWith("GET  /a HTTP/1.1\r\nHost: a\r\n\r\n"), 400U);
    EXPECT_EQ(refusedWith("GET /a  HTTP/1.1\r\nHost: a\r\n\r\n"), 400U);
    EXPECT_EQ(refusedWith("GET /a\r\nHost: a\r\n\r\n"), 400U);
    EXPECT_EQ(refusedWith("GET\r\n\r\n"), 400U);
    EXPECT_EQ(refusedWith(getRequest("/%2e%2e/..//a;b\\c?%00")), 0U) << "which no route matches";
}

TEST(RequestReader, refusesVersionsAndMethodsItDoesNotKnow)
{
    for (const auto *version : {"HTTP/2.0", "HTTP/1.2", "HTTP/0.9", "HTTP/3.0"})
        EXPECT_EQ(refusedWith("GET /a " + std::string(version) + "\r\nHost: a\r\n\r\n"), 505U) << version;
    for (const auto *version : {"HTTP/1", "http/1.1", "HTTP/1.1.1", "HTTP/11", "ICY"})
        EXPECT_EQ(refusedWith("GET /a " + std::string(version) + "\r\nHost: a\r\n\r\n"), 400U) << version;
    EXPECT_EQ(refusedWith("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"), 505U);
    EXPECT_EQ(refusedWith("CONNECT a:443 HTTP/1.1\r\nHost: a\r\n\r\n"), 501U);
    EXPECT_EQ(refusedWith("TRACE /a HTTP/1.1\r\nHost: a\r\n\r\n"), 501U);
    EXPECT_EQ(refusedWith("get /a HTTP/1.1\r\nHost: a\r\n\r\n"), 501U);
    EXPECT_EQ(refusedWith("G@T /a HTTP/1.1\r\nHost: a\r\n\r\n"), 400U);
}

TEST(RequestReader, refusesWhatIsTooLarge)
{
    const auto line = "/" + std::string(199, 'a');
    EXPECT_EQ(refusedWith(getRequest(line)), 0U);
    EXPECT_EQ(refusedWith(getRequest(line + "a")), 414U);
    EXPECT_EQ(refusedWith("GET /" + std::string(300, 'a')), 414U) << "before the line has ended";
    const auto spare = 1024 - getRequest("/", "X: \r\n").size();
    EXPECT_EQ(refusedWith(getRequest("/", "X: " + std::string(spare, 'a') + "\r\n")), 0U);
    EXPECT_EQ(refusedWith(getRequest("/", "X: " + std::string(spare + 1, 'a') + "\r\n")), 431U);
    EXPECT_EQ(refusedWith("GET / HTTP/1.1\r\nX: " + std::string(1024, 'a')), 431U)
        << "before the head has ended";
    std::string many;
    for (int number = 0; number < 120; ++number)
        many += "a:\r\n";
    EXPECT_EQ(refusedWith(getRequest("/", many)), 431U);
    EXPECT_EQ(refusedWith(postRequest("Content-Length: 100\r\n", std::string(100, ' '))), 0U);
    EXPECT_EQ(refusedWith(postRequest("Content-Length: 101\r\n")), 413U) << "before the body has come";
    EXPECT_EQ(refusedWith(chunked("64\r\n" + std::string(100, ' ') + "\r\n0\r\n\r\n")), 0U);
    EXPECT_EQ(refusedWith(chunked("32\r\n" + std::string(50, ' ') + "\r\n33\r\n")), 413U);
    EXPECT_EQ(refusedWith(chunked("FFFFFFFFFFFFFFFF\r\n")), 413U);
}

TEST(RequestReader, refusesChunksThatAreNone)
{
    for (const auto *body : {"x\r\n", "-1\r\n", "0x2\r\n{}\r\n0\r\n\r\n", "2\r\n{}0\r\n\r\n",
                             "2\n{}\r\n0\r\n\r\n", "2\r\n{}\r\r0\r\n\r\n", " 2\r\n{}\r\n0\r\n\r\n",
                             "10000000000000000\r\n", "\r\n", "2;\r\n{}\r\n0\r\n\r\n", "0\r\nX\r\n\r\n"})
        EXPECT_EQ(refusedWith(chunked(body)), 400U) << body;
    for (const auto *size : {"7", "0D", "0"})
        EXPECT_EQ(refusedWith(chunked(size + std::string(";x=\"a\r\nb"))), 400U)
            << "an open quote waits for no more";
    EXPECT_EQ(refusedWith(chunked("2;" + std::string(5000, 'a'))), 400U);
    EXPECT_EQ(refusedWith(chunked("0\r\nX: " + std::string(5000, 'a'))), 400U);
}

TEST(RequestReader, takesBodiesOfJsonOnly)
{
    const auto typed = [](const std::string &type) {
        return "POST /a HTTP/1.1\r\nHost: a\r\n" + type + "Content-Length: 2\r\n\r\n{}";
    };
    EXPECT_EQ(refusedWith(typed("Content-Type: Application/JSON; charset=UTF-8\r\n")), 0U);
    EXPECT_EQ(refusedWith(typed("Content-Type: text/plain\r\n")), 415U);
    EXPECT_EQ(refusedWith(typed("Content-Type: application/x-www-form-urlencoded\r\n")), 415U);
    EXPECT_EQ(refusedWith(typed("")), 415U);
    EXPECT_EQ(refusedWith("POST /a HTTP/1.1\r\nHost: a\r\nContent-Length: 0\r\n\r\n"), 0U);
    EXPECT_EQ(refusedWith("POST /a HTTP/1.1\r\nHost: a\r\n\r\n"), 0U) << "no body is an empty body";
}

TEST(RequestReader, knowsOneExpectation)
{
    RequestReader reader(limits);
    reader.take(postRequest("Expect: 100-Continue\r\nContent-Length: 2\r\n"));
    EXPECT_EQ(reader.state(), State::Body);
    EXPECT_TRUE(reader.expectsContinue());
    reader.take("{}");
    EXPECT_EQ(reader.state(), State::Whole);
    EXPECT_FALSE(reader.expectsContinue());
    EXPECT_EQ(refusedWith(postRequest("Expect: 200-ok\r\nContent-Length: 2\r\n")), 417U);
}

TEST(RequestReader, refusesInTheLanguageOfTheRequest)
{
    RequestReader reader(limits);
    reader.take("GET /a HTTP/9.9\r\naccept-language: ru\r\nAccept: application/json\r\n\r\n");
    EXPECT_EQ(reader.refusal().status, 505U);
    EXPECT_EQ(reader.request().language, Language::Russian);
    EXPECT_TRUE(reader.request().wantsJsonErrors);
    reader.next();
    reader.take(postRequest("Content-Length: 101\r\nAccept-Language: ru\r\n"));
    EXPECT_EQ(reader.refusal().status, 413U);
    EXPECT_EQ(reader.request().language, Language::Russian);
    EXPECT_FALSE(reader.request().wantsJsonErrors);
}

TEST(RequestReader, readsTheSameHoweverTheBytesCome)
{
    RequestReader reader(limits);
    const auto bytes = chunked("3;x\r\n[1,\r\n2\r\n2]\r\n0\r\nA: b\r\n\r\n");
    std::string waiting;
    for (const char byte : bytes) {
        ASSERT_NE(reader.state(), State::Whole);
        waiting += byte;
        waiting.erase(0, reader.take(waiting));
    }
    ASSERT_EQ(reader.state(), State::Whole);
    EXPECT_EQ(waiting, "");
    EXPECT_EQ(reader.request().body, "[1,2]");
}
