#pragma once

#include "FileHandle.h"
#include "freeDisplay.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <utility>

/// Stands between one X client and its server, on a socket of its own, and spoils what it is told to: the
/// server's answer to one request becomes an error, or its answers stop coming. In a thread of its own, for
/// the client waits for answers.
class XProxy
{
public:
    struct Fault
    {
        int request = 0;       ///< whose outcome is spoilt, counted from 1; 0 for none
        quint8 error = 0;      ///< the error's code; 0: from this request on the server is silent
        bool recovers = false; ///< what a silent server has to say comes once release() is called
    };

    /// `display` is the server's, like ":7".
    XProxy(const QString &display, Fault fault)
        : m_fault(fault)
        , m_display(freeDisplay())
        , m_listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
        , m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        const auto here = address(m_display);
        m_works =
            bind(m_listener.descriptor(), reinterpret_cast<const sockaddr *>(&here), sizeof here) == 0 &&
            listen(m_listener.descriptor(), 1) == 0;
        if (m_works)
            m_thread = std::thread([this, display] { run(display); });
    }
    ~XProxy()
    {
        m_ends = true;
        wake();
        if (m_thread.joinable())
            m_thread.join();
        clearDisplay(m_display);
    }
    XProxy(const XProxy &) = delete;
    XProxy &operator=(const XProxy &) = delete;

    bool works() const { return m_works; }
    QString display() const { return m_display; } ///< where the client connects
    int requests() const { return m_requests; }   ///< that have come so far
    bool spoilt() const { return m_spoilt; }      ///< whether the fault has come about

    /// Lets a silent server speak.
    void release()
    {
        m_released = true;
        wake();
    }

private:
    static sockaddr_un address(const QString &display)
    {
        const auto path = "/tmp/.X11-unix/X" + display.mid(1).toLatin1();
        sockaddr_un result{};
        result.sun_family = AF_UNIX;
        memcpy(result.sun_path, path.constData(), std::min(size_t(path.size()), sizeof result.sun_path - 1));
        return result;
    }
    void wake() const { eventfd_write(m_wake.descriptor(), 1); }

    void run(const QString &serverDisplay)
    {
        if (!ready(m_listener.descriptor()))
            return;
        const FileHandle client(accept4(m_listener.descriptor(), nullptr, nullptr, SOCK_CLOEXEC));
        const FileHandle server(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const auto there = address(serverDisplay);
        if (connect(server.descriptor(), reinterpret_cast<const sockaddr *>(&there), sizeof there) != 0)
            return;
        while (!m_ends) {
            pollfd both[] = {{client.descriptor(), POLLIN, 0},
                             {server.descriptor(), POLLIN, 0},
                             {m_wake.descriptor(), POLLIN, 0}};
            poll(both, 3, -1);
            eventfd_t ignored = 0;
            eventfd_read(m_wake.descriptor(), &ignored);
            if (both[0].revents && !take(client.descriptor(), m_fromClient))
                return;
            if (both[1].revents && !take(server.descriptor(), m_fromServer))
                return;
            give(server.descriptor(), clientBytes());
            give(client.descriptor(), serverBytes());
        }
    }
    bool ready(int descriptor) const
    {
        pollfd both[] = {{descriptor, POLLIN, 0}, {m_wake.descriptor(), POLLIN, 0}};
        poll(both, 2, -1);
        return !m_ends && both[0].revents;
    }
    static bool take(int from, QByteArray &into)
    {
        char bytes[16 * 1024];
        const auto got = recv(from, bytes, sizeof bytes, 0);
        if (got > 0)
            into.append(bytes, got);
        return got > 0;
    }
    static void give(int to, const QByteArray &bytes)
    {
        for (qsizetype sent = 0; sent < bytes.size();) {
            const auto step = send(to, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
            if (step <= 0)
                return;
            sent += step;
        }
    }

    template <typename Number>
    static Number numberAt(const QByteArray &bytes, qsizetype at)
    {
        Number number{};
        memcpy(&number, bytes.constData() + at, sizeof number);
        return number;
    }

    /// Whole requests, the spoilt one as one that no server knows, so that an error answers it in its turn.
    QByteArray clientBytes()
    {
        QByteArray whole;
        while (m_fromClient.size() >= 4) {
            qsizetype size = 4 * numberAt<quint16>(m_fromClient, 2);
            if (!m_clientGreeted) { // two texts, each padded
                if (m_fromClient.size() < 12)
                    break;
                const auto padded = [](quint16 length) { return (length + 3) / 4 * 4; };
                size = 12 + padded(numberAt<quint16>(m_fromClient, 6)) +
                       padded(numberAt<quint16>(m_fromClient, 8));
            }
            if (size < 4 || m_fromClient.size() < size)
                break;
            auto request = m_fromClient.first(size);
            m_fromClient.remove(0, size);
            if (std::exchange(m_clientGreeted, true) && ++m_requests == m_fault.request) {
                m_spoilt = true;
                if (m_fault.error != 0)
                    request[0] = 0;
            }
            whole += request;
        }
        return whole;
    }
    /// Whole messages, the spoilt one's with its code.
    QByteArray serverBytes()
    {
        const bool silent = m_spoilt && m_fault.error == 0 && !(m_fault.recovers && m_released);
        QByteArray whole;
        while (!silent && m_fromServer.size() >= 8) {
            const auto kind = quint8(m_fromServer[0]);
            const bool isLong = kind == 1 || kind == 35; // a reply, a generic event
            if (isLong && m_serverGreeted && m_fromServer.size() < 32)
                break;
            const auto size = !m_serverGreeted ? 8 + 4 * qsizetype(numberAt<quint16>(m_fromServer, 6))
                              : isLong         ? 32 + 4 * qsizetype(numberAt<quint32>(m_fromServer, 4))
                                               : 32;
            if (m_fromServer.size() < size)
                break;
            auto message = m_fromServer.first(size);
            m_fromServer.remove(0, size);
            if (std::exchange(m_serverGreeted, true) && kind == 0 &&
                numberAt<quint16>(message, 2) == quint16(m_fault.request))
                message[1] = char(m_fault.error);
            whole += message;
        }
        return whole;
    }

    const Fault m_fault;
    const QString m_display;
    FileHandle m_listener;
    FileHandle m_wake;
    bool m_works = false;
    std::atomic<bool> m_ends = false;
    std::atomic<bool> m_released = false;
    std::atomic<bool> m_spoilt = false;
    std::atomic<int> m_requests = 0;
    QByteArray m_fromClient; ///< not passed on yet
    QByteArray m_fromServer;
    bool m_clientGreeted = false;
    bool m_serverGreeted = false;
    std::thread m_thread;
};
