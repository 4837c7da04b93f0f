#include "RequestReader.h"

#include "httpRefusals.h"
#include "textChecks.h"

#include <algorithm>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/url/grammar/ci_string.hpp>
#include <cctype>

namespace http = boost::beast::http;

namespace {

using boost::urls::grammar::ci_is_equal;

/// Bytes; more than a line between two chunks needs, or the trailer behind the last.
constexpr std::size_t longestChunkLine = 4096;

/// Each costs more memory than bytes came for it.
constexpr std::size_t mostHeaders = 100;

std::string_view view(boost::core::string_view text)
{
    return {text.data(), text.size()};
}

/// "HTTP/1.1", and any other two digits.
bool isVersion(std::string_view text)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return text.size() == 8 && text.starts_with("HTTP/") && isDigit(text[5]) && text[6] == '.' &&
           isDigit(text[7]);
}

/// A name or an address with or without a port; nothing that could be read as more than that.
bool isHost(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char character) {
        return isLetterOrDigit(character) ||
               std::string_view("-._~:[]%!$&'()*+;=").find(character) != std::string_view::npos;
    });
}

/// The type of "application/json; charset=utf-8".
bool isJson(std::string_view contentType)
{
    return ci_is_equal(trimmed(contentType.substr(0, contentType.find(';'))), "application/json");
}

/// Whether a header of the form "text/html, application/json;q=0.9" names JSON.
bool namesJson(std::string_view accept)
{
    while (!accept.empty()) {
        const auto comma = std::min(accept.find(','), accept.size());
        if (isJson(accept.substr(0, comma)))
            return true;
        accept.remove_prefix(std::min(comma + 1, accept.size()));
    }
    return false;
}

/// Whether the whole line is there that says how long a chunk is, and can be no such line that a trailer must
/// follow, since it is not that of the last chunk or has an open quote. The parser takes what makes sense at
/// once; of the rest it would await more or not, by how the bytes came.
bool hasUselessChunkLine(std::string_view bytes)
{
    if (bytes.starts_with("\r\n")) // the end of the chunk before
        bytes.remove_prefix(2);
    const auto line = bytes.substr(0, bytes.find("\r\n"));
    if (line.size() == bytes.size())
        return false;
    const auto first = line.find_first_not_of('0');
    const bool isLast =
        line.starts_with('0') && (first == std::string_view::npos || !std::isxdigit(line[first] & 0x7f));
    return !isLast || std::count(line.begin(), line.end(), '"') % 2 != 0;
}

} // namespace

/// Beast's parser, which writes into the request and is held to what may come.
class RequestReader::Parser : public http::basic_parser<true>
{
public:
    explicit Parser(RequestReader &reader)
        : m_reader(reader)
    {
        header_limit(static_cast<std::uint32_t>(reader.m_limits.largestHead));
        body_limit(reader.m_limits.largestBody);
        eager(true);
    }

    using Text = boost::core::string_view;
    using Error = boost::beast::error_code;

    bool isOld() const { return m_isOld; }

private:
    void on_request_impl(http::verb, Text method, Text target, int version, Error &) override
    {
        auto &request = m_reader.m_request;
        request.method = view(method);
        const auto all = view(target);
        const auto mark = std::min(all.find('?'), all.size());
        request.path = all.substr(0, mark);
        request.query = all.substr(std::min(mark + 1, all.size()));
        m_isOld = version < 11;
    }

    void on_response_impl(int, Text, int, Error &) override {}

    void on_field_impl(http::field field, Text name, Text text, Error &error) override
    {
        if (m_isHeadDone)
            return; // a trailer says nothing that a handler may rely on
        if (m_reader.m_request.headers.size() == mostHeaders)
            return refuse(refusals::headTooLarge(), "head size", error);
        const auto value = view(text);
        if (field == http::field::host && (std::exchange(m_hasHost, true) || !isHost(value)))
            return refuse(refusals::badRequest(), "host", error);
        if (field == http::field::content_length &&
            (std::exchange(m_hasLength, true) ||
             value.find_first_not_of("0123456789") != std::string_view::npos))
            return refuse(refusals::badRequest(), "length", error);
        if (field == http::field::transfer_encoding && !ci_is_equal(value, "chunked"))
            return refuse(refusals::notImplemented(), "transfer coding", error);
        if (field == http::field::transfer_encoding && m_isOld)
            return refuse(refusals::badRequest(), "length", error);
        if (field == http::field::expect && !m_isOld) {
            if (!ci_is_equal(value, "100-continue"))
                return refuse(refusals::unknownExpectation(), "expectation", error);
            m_reader.m_expectsContinue = true;
        }
        if (field == http::field::accept_language)
            m_reader.m_request.language = preferredLanguage(value);
        if (field == http::field::accept && namesJson(value))
            m_reader.m_request.wantsJsonErrors = true;
        m_reader.m_request.headers.emplace_back(view(name), value);
    }

    void on_header_impl(Error &error) override
    {
        m_isHeadDone = true;
        if (!m_isOld && !m_hasHost)
            return refuse(refusals::badRequest(), "host", error);
        const bool hasBody = chunked() || content_length().value_or(0) > 0;
        if (hasBody && !isJson(m_reader.m_request.header("Content-Type")))
            return refuse(refusals::notJson(), "content type", error);
    }

    void on_body_init_impl(const boost::optional<std::uint64_t> &, Error &) override {}

    std::size_t on_body_impl(Text bytes, Error &) override
    {
        m_reader.m_request.body.append(bytes.data(), bytes.size());
        return bytes.size();
    }

    void on_chunk_header_impl(std::uint64_t, Text, Error &) override {}

    std::size_t on_chunk_body_impl(std::uint64_t, Text bytes, Error &error) override
    {
        return on_body_impl(bytes, error);
    }

    void on_finish_impl(Error &) override {}

    void refuse(const Refusal &refusal, std::string_view reason, Error &error)
    {
        m_reader.refuse(refusal, reason);
        error = http::error::bad_value;
    }

    RequestReader &m_reader;
    bool m_isOld = false;
    bool m_isHeadDone = false;
    bool m_hasHost = false;
    bool m_hasLength = false;
};

RequestReader::RequestReader(const RequestLimits &limits)
    : m_limits(limits)
{}

RequestReader::~RequestReader() = default;

bool RequestReader::isOldVersion() const
{
    return m_parser && m_parser->isOld();
}

void RequestReader::next()
{
    m_state = State::Head;
    m_request = {};
    m_expectsContinue = false;
    m_checked = m_headSize = m_emptyLine = 0;
    m_parser.reset();
}

bool RequestReader::keepsConnection() const
{
    return m_state == State::Whole && m_parser->keep_alive();
}

std::size_t RequestReader::take(std::string_view input)
{
    std::size_t taken = 0;
    if (m_state == State::Head) {
        // Some clients end a body with a line break that it does not count (RFC 9112, chapter 2.2). Its
        // halves may come one after the other.
        if (m_checked <= 1 && m_emptyLine == 0 && input.starts_with("\r\n")) {
            taken = m_emptyLine = 2;
            m_checked = 0;
            input.remove_prefix(taken);
        }
        if (findHead(input))
            parse(input, taken);
        if (m_state == State::Refused)
            readPreferences(input.substr(0, m_checked));
    } else if (m_state == State::Body) {
        parse(input, taken);
    }
    return taken;
}

/// Whether the head is whole and may be parsed. Looks at each byte once, however they come.
bool RequestReader::findHead(std::string_view input)
{
    for (; m_checked < input.size() && m_headSize == 0; ++m_checked) {
        const char character = input[m_checked];
        const char before = m_checked > 0 ? input[m_checked - 1] : '\0';
        const bool isControl = (character >= 0 && character < ' ') || character == '\x7f';
        const bool isFolded = before == '\n' && (character == ' ' || character == '\t');
        if ((before == '\r') != (character == '\n') || isFolded ||
            (isControl && character != '\r' && character != '\n' && character != '\t')) {
            refuse(refusals::badRequest(), "malformed");
            return false;
        }
        if (character == '\n' && m_checked >= 3 && input[m_checked - 2] == '\n')
            m_headSize = m_checked + 1;
    }
    const auto head = input.substr(0, m_headSize > 0 ? m_headSize : m_checked);
    const auto line = head.substr(0, head.find('\r'));
    if (line.size() > m_limits.longestTarget + 32) // room for the method and the version
        refuse(refusals::targetTooLong(), "target size");
    else if (head.size() > m_limits.largestHead)
        refuse(refusals::headTooLarge(), "head size");
    if (m_state == State::Refused)
        return false;
    return m_headSize > 0 && checkRequestLine(line);
}

bool RequestReader::checkRequestLine(std::string_view line)
{
    const auto first = std::min(line.find(' '), line.size());
    const auto last = line.rfind(' ');
    const auto method = line.substr(0, first);
    if (!isHttpToken(method) || last == std::string_view::npos || last <= first + 1) {
        refuse(refusals::badRequest(), "malformed");
        return false;
    }
    const auto target = line.substr(first + 1, last - first - 1);
    const auto version = line.substr(last + 1);
    if (!isVersion(version))
        refuse(refusals::badRequest(), "malformed");
    else if (version != "HTTP/1.1" && version != "HTTP/1.0")
        refuse(refusals::unknownVersion(), "version");
    else if (knownMethod(method).empty())
        refuse(refusals::notImplemented(), "method");
    else if (target.front() != '/' || !std::all_of(target.begin(), target.end(), [](char character) {
                 return isVisible(character) && character != '#';
             }))
        refuse(refusals::badRequest(), "target");
    else if (target.size() > m_limits.longestTarget)
        refuse(refusals::targetTooLong(), "target size");
    return m_state != State::Refused;
}

/// Gives the parser the head alone, then the body; what stands between chunks in pieces of a fixed size, so
/// that it does not matter how the bytes came.
void RequestReader::parse(std::string_view input, std::size_t &taken)
{
    if (m_state == State::Head) {
        m_parser = std::make_unique<Parser>(*this);
        taken += put(input.substr(0, m_headSize));
        input.remove_prefix(m_headSize);
    }
    while (m_state == State::Body && !input.empty()) {
        const auto piece = m_parser->chunked() ? input.substr(0, longestChunkLine) : input;
        const auto count = put(piece);
        taken += count;
        input.remove_prefix(count);
        const bool isStuck =
            piece.size() == longestChunkLine || (m_parser->chunked() && hasUselessChunkLine(piece));
        if (count == 0 && m_state == State::Body && isStuck)
            refuse(refusals::badRequest(), "chunk");
        if (count == 0)
            break;
    }
}

std::size_t RequestReader::put(std::string_view bytes)
{
    boost::beast::error_code error;
    const auto count = m_parser->put(boost::asio::buffer(bytes.data(), bytes.size()), error);
    if (m_state == State::Refused)
        return count;
    if (error && error != http::error::need_more)
        refuse(error == http::error::body_limit ? refusals::bodyTooLarge() : refusals::badRequest(),
               error == http::error::body_limit ? "body size"
               : m_state == State::Body         ? "chunk"
                                                : "malformed");
    else
        m_state = m_parser->is_done() ? State::Whole : State::Body;
    return count;
}

void RequestReader::refuse(const Refusal &refusal, std::string_view reason)
{
    m_state = State::Refused;
    m_refusal = refusal;
    m_reason = reason;
}

/// The language and the form of a refusal, from a head that makes no sense as a whole.
void RequestReader::readPreferences(std::string_view head)
{
    while (!head.empty()) {
        const auto line = head.substr(0, head.find_first_of("\r\n"));
        const auto colon = std::min(line.find(':'), line.size());
        const auto value = line.substr(std::min(colon + 1, line.size()));
        if (ci_is_equal(line.substr(0, colon), "Accept-Language"))
            m_request.language = preferredLanguage(value);
        else if (ci_is_equal(line.substr(0, colon), "Accept"))
            m_request.wantsJsonErrors = namesJson(value);
        head.remove_prefix(std::min(line.size() + 1, head.size()));
    }
}
