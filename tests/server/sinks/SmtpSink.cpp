#include "SmtpSink.h"

#include <boost/json/parse.hpp>
#include <boost/json/value_to.hpp>
#include <cstdlib>
#include <stdexcept>

namespace {

std::filesystem::path newFolder()
{
    auto name = (std::filesystem::temp_directory_path() / "quorvel-sink-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    return name;
}

std::vector<std::string> commandLine(const std::filesystem::path &folder,
                                     const std::vector<std::string> &options)
{
    std::vector<std::string> words{"/usr/bin/python3", "-B", SERVER_SINKS "/smtpSink.py", "--folder",
                                   folder.string()};
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

} // namespace

SmtpSink::SmtpSink(const std::vector<std::string> &options)
    : m_folder(newFolder())
    , m_program(commandLine(m_folder, options))
{
    const auto told = next();
    m_port = boost::json::value_to<std::uint16_t>(told.at("port"));
    if (const auto *certificate = told.as_object().if_contains("certificate"))
        m_certificate = certificate->as_string();
}

SmtpSink::~SmtpSink()
{
    m_program.finish();
    std::filesystem::remove_all(m_folder);
}

boost::json::value SmtpSink::next()
{
    const auto line = m_program.line();
    return line ? boost::json::parse(*line) : nullptr;
}

std::vector<boost::json::value> SmtpSink::finish()
{
    std::vector<boost::json::value> told;
    for (const auto &line : m_program.finish())
        told.push_back(boost::json::parse(line));
    return told;
}
