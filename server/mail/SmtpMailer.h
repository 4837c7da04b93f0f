#pragma once

#include "MailSender.h"
#include "Mailer.h"

#include <atomic>
#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <cstdint>
#include <optional>

enum class SmtpSecurity {
    StartTls, ///< a plain connection that must turn to TLS before anything is said
    Tls,      ///< TLS from the first byte
    None,     ///< for a mail server on this machine only
};

struct SmtpSettings
{
    std::string host; ///< empty: no mail server, the code stands on the console
    std::uint16_t port = 587;
    SmtpSecurity security = SmtpSecurity::StartTls;
    std::string user; ///< empty: without authentication
    std::string password;
    std::string from = "Quorvel <no-reply@localhost>"; ///< a name and an address, or an address
    std::string
        certificateAuthorities; ///< a PEM file in place of the system's; for tests and private mail servers
    std::chrono::milliseconds timeout{20'000}; ///< for all of one message, with its wait for a thread
};

/// Sends through a mail server, on a few threads of its own.
class SmtpMailer : public Mailer
{
public:
    /// So many messages may be under way or wait for a thread; one more fails at once.
    static constexpr int mostWaiting = 64;

    explicit SmtpMailer(SmtpSettings settings);
    /// Breaks off what is under way.
    ~SmtpMailer() override;

    /// Fails besides, before anything is sent, for a recipient who has not passed mailAddress(), a sender
    /// that is none, and a subject with control characters.
    boost::asio::awaitable<Result<>> send(Mail mail) override;

private:
    boost::asio::awaitable<Result<>> deliver(Mail mail, std::chrono::steady_clock::time_point deadline);

    SmtpSettings m_settings;
    std::optional<MailSender> m_sender;
    std::atomic<int> m_waiting = 0;
    std::atomic<bool> m_isStopping = false;
    boost::asio::thread_pool m_threads; ///< last: its threads end before the rest goes
};
