#pragma once

#include "LineProgram.h"

#include <boost/json/value.hpp>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// A real mail server on loopback, with a folder of its own; see smtpSink.py for its options.
class SmtpSink
{
public:
    explicit SmtpSink(const std::vector<std::string> &options);
    ~SmtpSink();
    SmtpSink(const SmtpSink &) = delete;
    SmtpSink &operator=(const SmtpSink &) = delete;

    std::uint16_t port() const { return m_port; }
    /// The PEM file of its certificate; empty where it has none.
    const std::string &certificate() const { return m_certificate; }

    /// The next thing that it tells: a message or a command; null where it tells nothing.
    boost::json::value next();

    /// Ends it. Returns all that it has told since.
    std::vector<boost::json::value> finish();

private:
    std::filesystem::path m_folder;
    LineProgram m_program;
    std::uint16_t m_port = 0;
    std::string m_certificate;
};
