#pragma once

#include "Mailer.h"

#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <cstdint>

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
    std::chrono::seconds timeout{20}; ///< for all of one message
};

/// Sends through a mail server, on a few threads of its own.
class SmtpMailer : public Mailer
{
public:
    explicit SmtpMailer(SmtpSettings settings);
    ~SmtpMailer() override;

    boost::asio::awaitable<Result<>> send(Mail mail) override;

private:
    SmtpSettings m_settings;
    boost::asio::thread_pool m_threads;
};
