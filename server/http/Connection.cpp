#include "Connection.h"

#include "httpRefusals.h"
#include "intoError.h"
#include "responseBytes.h"
#include "secrets.h"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <boost/url/grammar/ci_string.hpp>
#include <exception>
#include <spdlog/spdlog.h>

namespace asio = boost::asio;

namespace {

using boost::system::error_code;

/// How long a client that was refused may go on sending, so that it gets to read why.
constexpr std::chrono::seconds closingTime{2};
constexpr std::size_t mostDropped = 1024 * 1024;

} // namespace

std::string ConnectionsShared::newRequestId()
{
    constexpr std::size_t size = 8;
    if (m_random.empty())
        m_random = randomBytes(512 * size);
    const auto id = hexOf(std::string_view(m_random).substr(m_random.size() - size));
    m_random.resize(m_random.size() - size);
    return id;
}

std::string_view ConnectionsShared::date()
{
    const auto now = std::time(nullptr);
    if (std::exchange(m_dateSecond, now) != now)
        m_date = httpDate(now);
    return m_date;
}

Connection::Connection(HttpSocket socket, asio::ip::address peer, std::shared_ptr<ConnectionsShared> shared)
    : m_socket(std::move(socket))
    , m_timer(m_socket.get_executor())
    , m_peer(std::move(peer))
    , m_shared(std::move(shared))
    , m_reader({m_shared->settings.largestHead,
                std::min<std::size_t>(8 * 1024, m_shared->settings.largestHead),
                m_shared->settings.largestBody})
{}

void Connection::start(std::function<void()> over)
{
    const auto self = shared_from_this();
    asio::co_spawn(m_socket.get_executor(), run(),
                   asio::bind_cancellation_slot(
                       m_cancel.slot(), [self, over = std::move(over)](const std::exception_ptr &problem) {
                           self->close();
                           over();
                           if (!problem)
                               return;
                           try {
                               std::rethrow_exception(problem);
                           } catch (const std::exception &what) {
                               spdlog::error("a connection failed: {}", what.what());
                           }
                       }));
}

void Connection::stop()
{
    error_code error;
    if (isBetweenRequests() && m_input.empty() && m_socket.available(error) == 0)
        close();
}

void Connection::abandon()
{
    close();
    m_cancel.emit(asio::cancellation_type::terminal);
}

asio::awaitable<void> Connection::run()
{
    enter(Phase::Fresh, m_shared->settings.headTimeout);
    // GCC 12 makes wrong code of a co_await in the condition of a loop.
    for (bool goesOn = co_await readRequest(); goesOn; goesOn = co_await readRequest()) {
        if (!co_await answerRequest())
            break;
        enter(Phase::Idle, m_shared->settings.idleTimeout);
    }
    if (!m_isOver)
        co_await finish();
}

/// Whether there is a request to answer, be it with a refusal; false where the connection is over.
asio::awaitable<bool> Connection::readRequest()
{
    m_reader.next();
    bool saysContinue = true;
    take({});
    for (;;) {
        const auto state = m_reader.state();
        if (state == RequestReader::State::Whole || state == RequestReader::State::Refused || m_isLate)
            co_return true;
        if (state == RequestReader::State::Body && m_phase != Phase::Body)
            enter(Phase::Body, m_shared->settings.bodyTimeout);
        else if (isBetweenRequests() && !m_input.empty())
            enter(Phase::Head, m_shared->settings.headTimeout);
        if (m_reader.expectsContinue() && std::exchange(saysContinue, false) &&
            !co_await send("HTTP/1.1 100 Continue\r\n\r\n", {}))
            co_return false;
        if (m_shared->isStopping && isBetweenRequests() && m_phase == Phase::Idle)
            co_return false;
        if (!co_await receive())
            co_return m_isLate;
    }
}

/// Reads what there is, as soon as there is something; false at the end.
asio::awaitable<bool> Connection::receive()
{
    error_code error;
    co_await m_socket.async_wait(HttpSocket::wait_read, into(error));
    if (error || m_isOver)
        co_return false;
    const auto count = m_socket.read_some(asio::buffer(m_shared->input), error);
    if (error == asio::error::would_block)
        co_return true;
    if (error)
        co_return false;
    take({m_shared->input.data(), count});
    co_return true;
}

void Connection::take(std::string_view bytes)
{
    if (m_input.empty()) {
        const auto taken = bytes.empty() ? 0 : m_reader.take(bytes);
        m_input = std::string(bytes.substr(taken));
        return;
    }
    m_input += bytes;
    const auto taken = m_reader.take(m_input);
    m_input = m_input.substr(taken);
}

void Connection::describeClient(HttpRequest &request) const
{
    if (!m_shared->trusted.contains(m_peer)) {
        request.clientAddress = m_peer.to_string();
        return;
    }
    std::vector<std::string_view> forwarded;
    for (const auto &[name, value] : request.headers) {
        if (boost::urls::grammar::ci_is_equal(name, "X-Forwarded-For"))
            forwarded.emplace_back(value);
    }
    request.clientAddress = clientBehindProxies(m_peer, forwarded, m_shared->trusted).to_string();
}

HttpResponse Connection::refusal()
{
    m_shared->figures.refused(m_isLate ? "slow" : m_reader.reason());
    return refuse(m_reader.request(), m_isLate ? refusals::tooSlow() : m_reader.refusal());
}

/// Answers the request that has been read; whether another may follow.
asio::awaitable<bool> Connection::answerRequest()
{
    m_begin = Clock::now();
    m_requestId = m_shared->newRequestId();
    auto &request = m_reader.request();
    m_route = "other";
    HttpResponse response;
    bool closes = true;
    if (m_isLate || m_reader.state() == RequestReader::State::Refused) {
        response = refusal();
    } else {
        describeClient(request);
        m_route = m_shared->router.routeName(request.path);
        enter(Phase::Handling, m_shared->settings.handlerTimeout);
        response = co_await m_shared->router.answer(request);
        if (m_isOver || m_phase == Phase::Abandoned)
            co_return false;
        closes = !m_reader.keepsConnection() || m_shared->isStopping;
    }
    compose(response, closes);
    const bool isBodySent = request.method != "HEAD" && hasBody(response.status);
    const bool isSent = co_await send(m_shared->output, isBodySent ? std::string_view(response.body) : "");
    note(response);
    co_return isSent && !closes;
}

/// Writes the head of the answer into the shared bytes.
void Connection::compose(HttpResponse &response, bool closes)
{
    if (!isSendable(response)) {
        spdlog::error("the handler of {} made an answer that cannot be sent", m_route);
        response = refuse(m_reader.request(), refusals::unavailable());
        response.status = 500;
    }
    m_shared->output.clear();
    appendHead(m_shared->output, response, {m_requestId, m_shared->date(), closes, m_reader.isOldVersion()});
}

void Connection::note(const HttpResponse &response)
{
    const std::chrono::duration<double> took = Clock::now() - m_begin;
    const auto known = knownMethod(m_reader.request().method);
    const auto method = known.empty() ? "other" : known;
    m_shared->figures.answered(m_route, method, response.status, took.count());
    spdlog::info("request id={} method={} route={} status={} ms={:.2f} bytes={}", m_requestId, method,
                 m_route, response.status, took.count() * 1000, response.body.size());
}

/// Sends at once what the system takes, and waits for the client only where that is not all.
asio::awaitable<bool> Connection::send(std::string_view head, std::string_view body)
{
    error_code error;
    const std::array<asio::const_buffer, 2> parts = {asio::buffer(head), asio::buffer(body)};
    const auto sent = m_socket.write_some(parts, error);
    if (error && error != asio::error::would_block)
        co_return false;
    if (sent == head.size() + body.size())
        co_return true;
    m_output = head.substr(std::min(sent, head.size()));
    m_output += body.substr(sent - std::min(sent, head.size()));
    enter(Phase::Writing, m_shared->settings.writeTimeout);
    co_await asio::async_write(m_socket, asio::buffer(m_output), into(error));
    m_output = {};
    co_return !error && !m_isOver;
}

/// Says that nothing more comes. Where the client is still sending, reads on a little: closing with unread
/// bytes would take the answer away from it.
asio::awaitable<void> Connection::finish()
{
    error_code error;
    const bool isStillSending =
        m_isLate || m_reader.state() != RequestReader::State::Whole || !m_input.empty();
    m_socket.shutdown(HttpSocket::shutdown_send, error);
    if (error || (!isStillSending && m_socket.available(error) == 0))
        co_return;
    enter(Phase::Closing, closingTime);
    for (std::size_t dropped = 0; dropped < mostDropped;) {
        co_await m_socket.async_wait(HttpSocket::wait_read, into(error));
        if (error || m_isOver)
            co_return;
        const auto count = m_socket.read_some(asio::buffer(m_shared->input), error);
        if (error && error != asio::error::would_block)
            co_return;
        dropped += count;
    }
}

void Connection::enter(Phase phase, std::chrono::milliseconds most)
{
    m_phase = phase;
    m_deadline = Clock::now() + most;
    if (m_deadline < m_armedFor)
        armTimer();
}

/// There is one timer, which is set anew only where it would come too late: most requests never touch it.
void Connection::armTimer()
{
    m_armedFor = m_deadline;
    m_timer.expires_at(m_armedFor);
    m_timer.async_wait([self = shared_from_this()](const error_code &error) {
        if (!error)
            self->onTimer();
    });
}

void Connection::onTimer()
{
    if (m_isOver || m_phase == Phase::Abandoned)
        return;
    m_armedFor = Clock::time_point::max();
    if (Clock::now() < m_deadline)
        armTimer();
    else
        expire();
}

void Connection::expire()
{
    switch (m_phase) {
    case Phase::Head:
    case Phase::Body: {
        m_isLate = true;
        error_code error;
        m_socket.cancel(error);
        break;
    }
    case Phase::Handling:
        answerForHandler();
        break;
    default:
        close();
    }
}

/// The handler works on, since what it does may not be left half done, but nobody waits for it any more.
void Connection::answerForHandler()
{
    spdlog::error("the handler of {} took too long", m_route);
    m_phase = Phase::Abandoned;
    auto response = refuse(m_reader.request(), refusals::tookTooLong());
    compose(response, true);
    if (m_reader.request().method != "HEAD")
        m_shared->output += response.body;
    error_code error;
    m_socket.write_some(asio::buffer(m_shared->output), error);
    m_socket.shutdown(HttpSocket::shutdown_send, error);
    note(response);
}

void Connection::close()
{
    m_isOver = true;
    error_code error;
    m_socket.close(error);
    m_timer.cancel();
}
