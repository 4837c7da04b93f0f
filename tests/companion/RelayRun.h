#pragma once

#include "companionIdentity.h"
#include "frames.h"
#include "patience.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// What the tests of the relay stand in for: the browser that starts it, and the program that it looks for.

/// How Chromium and its family start a host.
inline QStringList chromiumArguments()
{
    return {QStringLiteral("chrome-extension://%1/").arg(QLatin1StringView(chromiumExtensionId))};
}

/// A relay at work, seen from the browser that started it; ended with the object.
class RelayRun
{
public:
    explicit RelayRun(const QString &runtimeFolder, const QStringList &arguments = chromiumArguments(),
                      const QString &inputFile = {}, const QString &outputFile = {})
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder);
        // Else memory that is free again is kept, and could not be told from memory that grows.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("quarantine_size_mb=1"));
        process.setProcessEnvironment(environment);
        if (!inputFile.isEmpty())
            process.setStandardInputFile(inputFile);
        if (!outputFile.isEmpty())
            process.setStandardOutputFile(outputFile);
        process.start(QString::fromLocal8Bit(RELAY), arguments);
        process.waitForStarted();
    }
    ~RelayRun()
    {
        process.kill();
        process.waitForFinished();
    }

    void send(std::string_view bytes)
    {
        process.write(bytes.data(), qint64(bytes.size()));
        process.waitForBytesWritten(0);
    }

    /// The next message from the relay; none when it does not come within the time.
    std::optional<std::string> message(int milliseconds = patience)
    {
        QElapsedTimer stopwatch;
        stopwatch.start();
        do {
            if (auto next = reader.next())
                return next;
            process.waitForReadyRead(20);
            reader.append(process.readAllStandardOutput().toStdString());
        } while (stopwatch.elapsed() < milliseconds);
        return reader.next();
    }

    /// A number from one of the process's files in /proc, by the word before it; -1 where there is none.
    qint64 fact(const char *file, QByteArrayView word) const
    {
        QFile facts(QStringLiteral("/proc/%1/%2").arg(process.processId()).arg(QLatin1StringView(file)));
        if (!facts.open(QIODevice::ReadOnly))
            return -1;
        for (const auto &line : facts.readAll().split('\n')) {
            if (line.startsWith(word))
                return line.mid(word.size()).trimmed().split(' ').first().toLongLong();
        }
        return -1;
    }

    qint64 mebibytes() const { return fact("status", "VmRSS:") / 1024; }

    /// How often it has woken or was made to wait. A process for which this stands still does nothing.
    qint64 switches() const
    {
        return fact("status", "voluntary_ctxt_switches:") + fact("status", "nonvoluntary_ctxt_switches:");
    }

    /// Hundredths of a second of processor time; -1 where there is no such process.
    qint64 ticks() const
    {
        QFile facts(QStringLiteral("/proc/%1/stat").arg(process.processId()));
        if (!facts.open(QIODevice::ReadOnly))
            return -1;
        const auto fields = facts.readAll().split(')').last().trimmed().split(' ');
        return fields[11].toLongLong() + fields[12].toLongLong();
    }

    QProcess process;
    FrameReader reader{longestFrameToBrowser};
};

/// One connection of the relay, seen from the program.
class Connection
{
public:
    explicit Connection(int socket)
        : m_socket(socket)
    {}
    ~Connection() { close(); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isOpen() const { return m_socket >= 0; }

    void close()
    {
        if (m_socket >= 0)
            ::close(m_socket);
        m_socket = -1;
    }

    /// Bytes that were taken within the time, at most all.
    std::size_t send(std::string_view bytes, int milliseconds = patience)
    {
        std::size_t sent = 0;
        while (sent < bytes.size() && ready(POLLOUT, milliseconds)) {
            const auto put =
                ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (put <= 0)
                break;
            sent += std::size_t(put);
        }
        return sent;
    }

    std::optional<std::string> message(int milliseconds = patience)
    {
        while (true) {
            if (auto next = reader.next())
                return next;
            if (!receive(milliseconds))
                return std::nullopt;
        }
    }

    /// Whether the relay closes it within the time, and sends nothing before.
    bool ends(int milliseconds = patience)
    {
        return ready(POLLIN, milliseconds) && !receive(0) && reader.pending() == 0;
    }

    FrameReader reader{longestFrameFromBrowser};

private:
    bool ready(short what, int milliseconds) const
    {
        pollfd watched{m_socket, what, 0};
        return poll(&watched, 1, milliseconds) == 1;
    }

    bool receive(int milliseconds)
    {
        static char bytes[256 * 1024];
        if (!ready(POLLIN, milliseconds))
            return false;
        const auto got = recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT);
        if (got > 0)
            reader.append({bytes, std::size_t(got)});
        return got > 0;
    }

    int m_socket;
};

/// The program's end of the socket. Goes without removing its file, as a killed program does.
class Server
{
public:
    /// Binds; listens at once unless told otherwise.
    explicit Server(const QString &path, bool listening = true)
    {
        const auto name = QFile::encodeName(path);
        ::unlink(name.constData());
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, name.constData(), sizeof address.sun_path);
        m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        m_bound = bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        if (listening)
            listen();
    }
    ~Server() { ::close(m_socket); }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    bool isBound() const { return m_bound; }
    int descriptor() const { return m_socket; }
    void listen() { ::listen(m_socket, 8); }

    /// The next connection; one that is not open when none comes within the time.
    Connection accept(int milliseconds = patience)
    {
        pollfd watched{m_socket, POLLIN, 0};
        const bool there = poll(&watched, 1, milliseconds) == 1;
        return Connection(there ? ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC) : -1);
    }

private:
    int m_socket = -1;
    bool m_bound = false;
};
