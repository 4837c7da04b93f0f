#pragma once

#include "Http.h"
#include "Refusal.h"

#include <cstddef>
#include <memory>
#include <string_view>

struct RequestLimits
{
    std::size_t largestHead = 16 * 1024;  ///< bytes of the request line and all headers
    std::size_t longestTarget = 8 * 1024; ///< bytes of the path with its query
    std::size_t largestBody = 64 * 1024;  ///< bytes, without what chunks need besides
};

/// Makes requests of the bytes of one connection. It holds HTTP 1.1 (RFC 9112) to the letter wherever two
/// programs could read the same bytes in two ways: lines end with CR LF, no header goes over several lines,
/// the length of a body is said once.
class RequestReader
{
public:
    enum class State {
        Head,    ///< the head is not whole yet
        Body,    ///< the head is, the body is not
        Whole,   ///< request() is ready
        Refused, ///< refusal() says why; nothing more can be read from this connection
    };

    explicit RequestReader(const RequestLimits &limits);
    ~RequestReader();

    /// `input` begins with the first byte that was not taken before. Returns how many bytes it took; what is
    /// left over must come again, with more behind it, or belongs to the next request.
    std::size_t take(std::string_view input);

    State state() const { return m_state; }

    /// Whole, or in the state Refused what is known of it: the language of its answer. Without clientAddress.
    HttpRequest &request() { return m_request; }

    const Refusal &refusal() const { return m_refusal; }

    /// Why it is refused, in a word or two for the figures: "head size".
    std::string_view reason() const { return m_reason; }

    /// Whether the other side waits for "100 Continue" before it sends the body.
    bool expectsContinue() const { return m_state == State::Body && m_expectsContinue; }

    /// Whether another request may follow.
    bool keepsConnection() const;

    /// Whether it is of HTTP 1.0, where a connection ends unless both sides say that it stays.
    bool isOldVersion() const;

    /// Begins with the next request.
    void next();

private:
    class Parser;

    bool findHead(std::string_view input);
    bool checkRequestLine(std::string_view line);
    void parse(std::string_view input, std::size_t &taken);
    std::size_t put(std::string_view bytes);
    void refuse(const Refusal &refusal, std::string_view reason);
    void readPreferences(std::string_view head);

    RequestLimits m_limits;
    State m_state = State::Head;
    HttpRequest m_request;
    Refusal m_refusal;
    std::string_view m_reason;
    bool m_expectsContinue = false;
    std::size_t m_checked = 0;   ///< bytes of the head that have been looked at
    std::size_t m_headSize = 0;  ///< 0: its end has not been seen
    std::size_t m_emptyLine = 0; ///< 2 where an empty line came before the request
    std::unique_ptr<Parser> m_parser;
};
