#include "SmtpMailer.h"

#include "smtpTransfer.h"
#include "textChecks.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <curl/curl.h>
#include <spdlog/spdlog.h>

namespace asio = boost::asio;

namespace {

constexpr std::size_t threads = 4; // a slow server keeps a message a second or two

/// Once in the program, before any thread can use libcurl.
void startCurl()
{
    static const auto code = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (code != CURLE_OK)
        spdlog::error("libcurl does not start: {}", curl_easy_strerror(code));
}

} // namespace

SmtpMailer::SmtpMailer(SmtpSettings settings)
    : m_settings(std::move(settings))
    , m_sender(MailSender::parse(m_settings.from))
    , m_threads(threads)
{
    startCurl();
}

SmtpMailer::~SmtpMailer()
{
    m_isStopping = true;
    m_threads.join();
}

asio::awaitable<Result<>> SmtpMailer::send(Mail mail)
{
    const auto deadline = std::chrono::steady_clock::now() + m_settings.timeout;
    if (mailAddress(mail.to) != mail.to)
        co_return Failure{"the recipient of a message is no mail address"};
    if (!m_sender)
        co_return Failure{"the sender of all messages is no mail address"};
    if (hasControlCharacters(mail.subject))
        co_return Failure{"the subject of a message has control characters"};
    if (m_waiting.fetch_add(1) >= mostWaiting) {
        --m_waiting;
        co_return Failure{"too many messages wait for the mail server"};
    }
    co_return co_await asio::co_spawn(m_threads, deliver(std::move(mail), deadline), asio::use_awaitable);
}

asio::awaitable<Result<>> SmtpMailer::deliver(Mail mail, std::chrono::steady_clock::time_point deadline)
{
    auto sent = sendBySmtp(m_settings, *m_sender, mail, deadline, m_isStopping);
    --m_waiting;
    co_return sent;
}
