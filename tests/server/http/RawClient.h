#pragma once

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

/// A client that sends exactly the bytes it is given. Every wait ends after 20 s, so that no test hangs.
class RawClient
{
public:
    /// A socket that is not connected yet.
    RawClient()
        : m_socket(::socket(AF_INET, SOCK_STREAM, 0))
    {}
    explicit RawClient(std::uint16_t port)
        : RawClient()
    {
        connect(port);
    }
    RawClient(RawClient &&other) noexcept
        : m_socket(std::exchange(other.m_socket, -1))
        , m_isConnected(other.m_isConnected)
    {}
    RawClient(const RawClient &) = delete;
    ~RawClient() { disconnect(); }

    bool connect(std::uint16_t port)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_isConnected = ::connect(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0;
        return m_isConnected;
    }

    bool isConnected() const { return m_isConnected; }

    void disconnect()
    {
        if (m_socket >= 0)
            ::close(std::exchange(m_socket, -1));
    }

    /// Ends the connection with a reset, as a machine does that was switched off and on.
    void reset()
    {
        const linger hard{1, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &hard, sizeof(hard));
        disconnect();
    }

    void endSending() { ::shutdown(m_socket, SHUT_WR); }

    /// Whether all of it was taken.
    bool send(std::string_view bytes)
    {
        while (!bytes.empty()) {
            if (!waitFor(POLLOUT))
                return false;
            const auto count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    /// Whatever comes next; empty at the end of the connection.
    std::string readSome()
    {
        std::string bytes(16 * 1024, '\0');
        const auto count = waitFor(POLLIN) ? ::recv(m_socket, bytes.data(), bytes.size(), 0) : -1;
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

    /// All until the other side ends the connection.
    std::string readToEnd()
    {
        std::string all;
        for (auto bytes = readSome(); !bytes.empty(); bytes = readSome())
            all += bytes;
        return all;
    }

    /// One answer with its body, which has a Content-Length; what is behind it stays for the next call.
    std::string readAnswer(bool hasBody = true)
    {
        for (;;) {
            const auto end = m_read.find("\r\n\r\n");
            if (end != std::string::npos) {
                const auto place = m_read.find("Content-Length: ");
                const bool isCounted = hasBody && place < end;
                const auto length = isCounted ? std::stoul(m_read.substr(place + 16)) : 0;
                if (m_read.size() >= end + 4 + length) {
                    auto answer = m_read.substr(0, end + 4 + length);
                    m_read.erase(0, answer.size());
                    return answer;
                }
            }
            const auto bytes = readSome();
            if (bytes.empty())
                return std::exchange(m_read, {});
            m_read += bytes;
        }
    }

    /// Whether something came, or the end, within `longest` milliseconds.
    bool hasCome(int longest) const { return waitFor(POLLIN, longest); }

private:
    bool waitFor(short what, int longest = 20'000) const
    {
        pollfd wanted{m_socket, what, 0};
        return ::poll(&wanted, 1, longest) > 0;
    }

    int m_socket;
    bool m_isConnected = false;
    std::string m_read;
};

/// "200" of "HTTP/1.1 200 OK..."; empty where it is no answer.
inline std::string statusOf(const std::string &answer)
{
    return answer.starts_with("HTTP/1.1 ") ? answer.substr(9, 3) : "";
}

inline std::string bodyOf(const std::string &answer)
{
    const auto end = answer.find("\r\n\r\n");
    return end == std::string::npos ? "" : answer.substr(end + 4);
}

/// The value of a header, spelled as it is; "(none)" where there is none.
inline std::string headerOf(const std::string &answer, const std::string &name)
{
    const auto place = answer.find("\r\n" + name + ": ");
    if (place == std::string::npos || place > answer.find("\r\n\r\n"))
        return "(none)";
    const auto begin = place + name.size() + 4;
    return answer.substr(begin, answer.find("\r\n", begin) - begin);
}
