#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <functional>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

/// One connection of a RawServer.
class RawConnection
{
public:
    explicit RawConnection(int socket)
        : m_socket(socket)
    {}
    RawConnection(const RawConnection &) = delete;
    ~RawConnection() { ::close(m_socket); }

    int handle() const { return m_socket; }

    /// Whether the client is still there to take it.
    bool send(std::string_view bytes) const
    {
        return ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

    /// The head of the request with what came with it; all there is until `end` has come.
    std::string readUntil(std::string_view end) const
    {
        std::string all;
        std::string bytes(4096, '\0');
        while (all.find(end) == std::string::npos) {
            const auto count = ::recv(m_socket, bytes.data(), bytes.size(), 0);
            if (count <= 0)
                break;
            all.append(bytes, 0, static_cast<std::size_t>(count));
        }
        return all;
    }

    /// Waits until the client has gone.
    void waitForEnd() const
    {
        std::string bytes(4096, '\0');
        while (::recv(m_socket, bytes.data(), bytes.size(), 0) > 0) {
        }
    }

private:
    int m_socket;
};

/// A server on a free port that does with each connection what a test tells it, one after the other. What it
/// waits for from a client ends after 20 s.
class RawServer
{
public:
    explicit RawServer(std::function<void(RawConnection &)> serve, int family = AF_INET)
        : m_listener(::socket(family, SOCK_STREAM, 0))
    {
        bindTo(family);
        m_thread = std::thread([this, serve = std::move(serve)] {
            for (;;) {
                RawConnection connection(::accept(m_listener, nullptr, nullptr));
                if (connection.handle() < 0)
                    return;
                const timeval longest{20, 0};
                ::setsockopt(connection.handle(), SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof(longest));
                serve(connection);
            }
        });
    }
    RawServer(const RawServer &) = delete;
    ~RawServer()
    {
        ::shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        ::close(m_listener);
    }

    std::uint16_t port() const { return m_port; }
    std::string url(const std::string &rest = "/") const
    {
        return "http://127.0.0.1:" + std::to_string(m_port) + rest;
    }

private:
    void bindTo(int family)
    {
        sockaddr_storage address{};
        socklen_t size = family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
        auto &four = reinterpret_cast<sockaddr_in &>(address);
        auto &six = reinterpret_cast<sockaddr_in6 &>(address);
        address.ss_family = static_cast<sa_family_t>(family);
        if (family == AF_INET6)
            six.sin6_addr = in6addr_loopback;
        else
            four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto *const general = reinterpret_cast<sockaddr *>(&address);
        if (::bind(m_listener, general, size) == 0 && ::listen(m_listener, 16) == 0 &&
            ::getsockname(m_listener, general, &size) == 0)
            m_port = ntohs(family == AF_INET6 ? six.sin6_port : four.sin_port);
    }

    int m_listener;
    std::uint16_t m_port = 0;
    std::thread m_thread;
};
