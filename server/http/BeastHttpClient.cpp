#include "BeastHttpClient.h"

#include "intoError.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/url/parse.hpp>
#include <chrono>
#include <mutex>
#include <optional>
#include <vector>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using Endpoints = std::vector<asio::ip::tcp::endpoint>;
using TlsStream = asio::ssl::stream<beast::tcp_stream>;

/// Of all headers of an answer.
constexpr std::uint32_t largestHead = 32 * 1024;

/// Name look-ups at a time. They block, and one that hangs must not keep the others.
constexpr std::size_t resolverThreads = 4;

/// Where a call goes; all that is needed of its address.
struct Target
{
    bool isTls = false;
    std::string host; ///< without the brackets of an IPv6 address
    std::string port;
    std::string hostHeader;
    std::string target; ///< path and query
};

std::optional<Target> targetFrom(const std::string &url)
{
    const auto parsed = boost::urls::parse_uri(url);
    if (!parsed || parsed->has_userinfo())
        return std::nullopt;
    const bool isTls = parsed->scheme_id() == boost::urls::scheme::https;
    if (!isTls && parsed->scheme_id() != boost::urls::scheme::http)
        return std::nullopt;
    if (!parsed->port().empty() && parsed->port_number() == 0)
        return std::nullopt;
    Target target;
    target.isTls = isTls;
    target.host = parsed->host_address();
    const std::string port = parsed->port();
    target.port = port.empty() ? (isTls ? "443" : "80") : port;
    target.hostHeader = parsed->encoded_host_and_port();
    target.target = parsed->encoded_path().empty() ? "/" : std::string(parsed->encoded_path());
    if (parsed->has_query())
        target.target += "?" + std::string(parsed->encoded_query());
    if (target.host.empty() || target.host.find('\0') != std::string::npos)
        return std::nullopt;
    return target;
}

/// Why it did not work, without what was asked.
Failure failed(std::string_view step, const Target &target, const error_code &error)
{
    std::string reason(step);
    reason += ' ' + target.host + " failed: ";
    reason += error == beast::error::timeout ? "it took too long" : error.message();
    return Failure{std::move(reason)};
}

/// One call from its look-up to its answer. All its steps share one end of time.
class Exchange
{
public:
    Exchange(HttpCall call, Target target)
        : m_call(std::move(call))
        , m_target(std::move(target))
        , m_end(Clock::now() + m_call.timeout)
    {}

    asio::awaitable<Result<HttpAnswer>> run(asio::ssl::context &tls);

private:
    asio::awaitable<error_code> resolve();
    asio::awaitable<error_code> connect(beast::tcp_stream &stream) const;
    asio::awaitable<Result<HttpAnswer>> overTls(beast::tcp_stream stream, asio::ssl::context &tls);
    template <class Stream>
    asio::awaitable<Result<HttpAnswer>> ask(Stream &stream);
    template <class Stream>
    asio::awaitable<error_code> write(Stream &stream);
    template <class Stream>
    asio::awaitable<error_code> read(Stream &stream, HttpAnswer &answer);

    HttpCall m_call;
    Target m_target;
    Clock::time_point m_end;
    Endpoints m_endpoints;
};

/// The threads of all look-ups. Nobody joins them: a program that ends does not wait for a name server.
asio::thread_pool &resolvers()
{
    static auto &threads = *new asio::thread_pool(resolverThreads);
    return threads;
}

/// What a look-up on another thread leaves; either side may let go of it first, on its own thread.
struct LookUp
{
    std::mutex mutex;
    bool isAwaited = true; ///< under the mutex: while it is, there is an executor to answer to

    // Of the coroutine's thread alone:
    Endpoints endpoints;
    error_code error = beast::error::timeout;
    asio::steady_timer *waiting = nullptr; ///< who waits
};

/// The wait of a coroutine for its look-up: the timer ends with the coroutine, not with whoever lets go last.
class LookUpWait
{
public:
    LookUpWait(LookUp &lookUp, const asio::any_io_executor &executor, Clock::time_point end)
        : m_lookUp(lookUp)
        , m_timer(executor, end)
    {
        m_lookUp.waiting = &m_timer;
    }
    ~LookUpWait()
    {
        m_lookUp.waiting = nullptr;
        const std::lock_guard lock(m_lookUp.mutex);
        m_lookUp.isAwaited = false;
    }
    LookUpWait(const LookUpWait &) = delete;
    LookUpWait &operator=(const LookUpWait &) = delete;

    asio::steady_timer &timer() { return m_timer; }

private:
    LookUp &m_lookUp;
    asio::steady_timer m_timer;
};

/// On a thread of the resolvers. A look-up that stood in line for longer than anybody waits is not begun.
void lookUp(const std::shared_ptr<LookUp> &found, const asio::any_io_executor &executor, const Target &target)
{
    {
        const std::lock_guard lock(found->mutex);
        if (!found->isAwaited)
            return;
    }
    error_code problem;
    Endpoints endpoints;
    asio::ip::tcp::resolver resolver(resolvers());
    const auto flags = asio::ip::tcp::resolver::numeric_service;
    for (const auto &entry : resolver.resolve(target.host, target.port, flags, problem))
        endpoints.push_back(entry.endpoint());
    const std::lock_guard lock(found->mutex);
    if (!found->isAwaited)
        return;
    asio::post(executor, [found, endpoints = std::move(endpoints), problem]() mutable {
        found->endpoints = std::move(endpoints);
        found->error = problem;
        if (found->waiting)
            found->waiting->cancel();
    });
}

asio::awaitable<error_code> Exchange::resolve()
{
    error_code error;
    const auto address = asio::ip::make_address(m_target.host, error);
    if (!error) {
        m_endpoints.emplace_back(address, static_cast<std::uint16_t>(std::stoul(m_target.port)));
        co_return error;
    }
    const auto executor = co_await asio::this_coro::executor;
    const auto found = std::make_shared<LookUp>();
    LookUpWait wait(*found, executor, m_end);
    asio::post(resolvers(), [found, executor, target = m_target] { lookUp(found, executor, target); });
    co_await wait.timer().async_wait(into(error));
    m_endpoints = std::move(found->endpoints);
    // The system's order stays within each kind.
    std::stable_partition(m_endpoints.begin(), m_endpoints.end(),
                          [](const auto &endpoint) { return endpoint.address().is_v6(); });
    co_return found->error;
}

/// Tries one address after the other; each has an equal share of the time that is left, so that one that
/// answers nothing leaves some for the next.
asio::awaitable<error_code> Exchange::connect(beast::tcp_stream &stream) const
{
    error_code error = asio::error::host_not_found;
    auto left = static_cast<int>(m_endpoints.size());
    for (const auto &endpoint : m_endpoints) {
        stream.close();
        stream.expires_after((m_end - Clock::now()) / left--);
        co_await stream.async_connect(endpoint, into(error));
        if (!error) {
            stream.expires_at(m_end);
            error_code ignored;
            stream.socket().set_option(asio::ip::tcp::no_delay(true), ignored);
            break;
        }
    }
    co_return error;
}

asio::awaitable<Result<HttpAnswer>> Exchange::run(asio::ssl::context &tls)
{
    auto error = co_await resolve();
    if (error)
        co_return failed("looking up", m_target, error);
    beast::tcp_stream stream(co_await asio::this_coro::executor);
    error = co_await connect(stream);
    if (error)
        co_return failed("connecting to", m_target, error);
    if (m_target.isTls)
        co_return co_await overTls(std::move(stream), tls);
    co_return co_await ask(stream);
}

asio::awaitable<Result<HttpAnswer>> Exchange::overTls(beast::tcp_stream plain, asio::ssl::context &tls)
{
    TlsStream stream(std::move(plain), tls);
    error_code error;
    stream.set_verify_mode(asio::ssl::verify_peer, error);
    stream.set_verify_callback(asio::ssl::host_name_verification(m_target.host), error);
    asio::ip::make_address(m_target.host, error);
    if (error && SSL_set_tlsext_host_name(stream.native_handle(), m_target.host.c_str()) != 1)
        co_return Failure{"the name " + m_target.host + " is not fit for TLS"};
    co_await stream.async_handshake(TlsStream::client, into(error));
    if (error)
        co_return failed("TLS with", m_target, error);
    co_return co_await ask(stream);
}

template <class Stream>
asio::awaitable<Result<HttpAnswer>> Exchange::ask(Stream &stream)
{
    // An answer may come before all of the request has gone, and say why the rest is not wanted.
    const auto writeError = co_await write(stream);
    HttpAnswer answer;
    const auto error = co_await read(stream, answer);
    if (error)
        co_return failed("asking", m_target, writeError ? writeError : error);
    co_return answer;
}

template <class Stream>
asio::awaitable<error_code> Exchange::write(Stream &stream)
{
    http::request<http::string_body> request;
    request.method_string(m_call.method);
    request.target(m_target.target);
    request.set(http::field::host, m_target.hostHeader);
    request.set(http::field::user_agent, "quorvel-server");
    request.set(http::field::connection, "close");
    for (const auto &[name, value] : m_call.headers)
        request.set(name, value);
    request.body() = std::move(m_call.body);
    if (!request.body().empty() || (m_call.method != "GET" && m_call.method != "HEAD"))
        request.content_length(request.body().size());
    error_code error;
    co_await http::async_write(stream, request, into(error));
    co_return error;
}

template <class Stream>
asio::awaitable<error_code> Exchange::read(Stream &stream, HttpAnswer &answer)
{
    beast::flat_buffer buffer;
    error_code error;
    for (int heads = 0; heads < 5; ++heads) { // interim answers come before the real one
        http::response_parser<http::string_body> parser;
        parser.header_limit(largestHead);
        parser.body_limit(m_call.largestAnswer);
        parser.skip(m_call.method == "HEAD");
        co_await http::async_read(stream, buffer, parser, into(error));
        if (error)
            co_return error;
        auto &response = parser.get();
        if (response.result_int() / 100 == 1 && response.result_int() != 101)
            continue;
        answer.status = response.result_int();
        for (const auto &field : response)
            answer.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
        answer.body = std::move(response.body());
        co_return error;
    }
    co_return http::error::bad_status;
}

} // namespace

struct BeastHttpClient::State
{
    asio::ssl::context tls{asio::ssl::context::tls_client};
};

Result<std::unique_ptr<BeastHttpClient>> BeastHttpClient::create(const std::string &certificateAuthorities)
{
    auto state = std::make_shared<State>();
    error_code error;
    if (certificateAuthorities.empty())
        state->tls.set_default_verify_paths(error);
    else
        state->tls.load_verify_file(certificateAuthorities, error);
    if (error)
        return Failure{"the certificate authorities cannot be read: " + error.message()};
    auto *const native = state->tls.native_handle();
    SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
    SSL_CTX_set_mode(native, SSL_MODE_RELEASE_BUFFERS);
    return std::unique_ptr<BeastHttpClient>(new BeastHttpClient(std::move(state)));
}

BeastHttpClient::BeastHttpClient(std::shared_ptr<State> state)
    : m_state(std::move(state))
{}

BeastHttpClient::~BeastHttpClient() = default;

asio::awaitable<Result<HttpAnswer>> BeastHttpClient::send(HttpCall call)
{
    const auto state = m_state;
    auto target = targetFrom(call.url);
    if (!target)
        co_return Failure{"the address to ask is none of http or https"};
    if (!isHttpToken(call.method) || !areSendable(call.headers))
        co_return Failure{"the request to " + target->host + " has a header that cannot be sent"};
    call.url.clear();
    Exchange exchange(std::move(call), std::move(*target));
    co_return co_await exchange.run(state->tls);
}
