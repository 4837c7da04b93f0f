#pragma once

#include "CompanionServer.h"
#include "MadeSystem.h"
#include "companionIdentity.h"
#include "frames.h"

#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>

#include <nlohmann/json.hpp>

/// JSON written with single quotes, which reads better in C++.
inline QByteArray json(const char *text)
{
    return QByteArray(text).replace('\'', '"');
}

/// A browser's side of a connection, played by the test.
class CompanionClient
{
public:
    explicit CompanionClient(const QString &path)
    {
        m_socket.connectToServer(path);
        if (!m_socket.waitForConnected(30'000))
            qFatal("the test's socket cannot connect");
    }

    QLocalSocket &socket() { return m_socket; }

    void sendBytes(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }
    void send(const QByteArray &json) { sendBytes(frameOf(json)); }

    /// Says hello and tells its windows.
    void tell(const QByteArray &windows, const QByteArray &focused = "null", bool privateWindows = true)
    {
        hello(privateWindows);
        send(R"({"type":"windows","windows":)" + windows + R"(,"focused":)" + focused + '}');
    }
    void hello(bool privateWindows = true, int protocol = companionProtocol)
    {
        send(R"({"type":"hello","protocol":)" + QByteArray::number(protocol) +
             R"(,"version":"1","privateWindows":)" + (privateWindows ? "true" : "false") + '}');
    }

    /// The next message of the program; null where none comes within 30 s.
    nlohmann::json next()
    {
        std::optional<std::string> message;
        const bool came = QTest::qWaitFor(
            [&] {
                const auto bytes = m_socket.readAll();
                m_frames.append({bytes.constData(), std::size_t(bytes.size())});
                message = m_frames.next();
                return message.has_value();
            },
            30'000);
        return came ? nlohmann::json::parse(*message, nullptr, false) : nlohmann::json();
    }

    /// Whether a message has come by now.
    bool hasNext()
    {
        QTest::qWait(20);
        return m_socket.bytesAvailable() > 0 || m_frames.pending() > 0;
    }

    bool isClosed() const { return m_socket.state() == QLocalSocket::UnconnectedState; }

    static QByteArray frameOf(const QByteArray &json)
    {
        return QByteArray::fromStdString(writeFrame({json.constData(), std::size_t(json.size())}));
    }

private:
    QLocalSocket m_socket;
    FrameReader m_frames{longestFrameToBrowser};
};

/// A listening server in a folder of its own, and a made /proc in which the test is a browser's relay.
class CompanionStage
{
public:
    static constexpr char chromium[] = "/usr/lib/chromium/chromium";
    static constexpr char firefox[] = "/usr/lib/firefox-esr/firefox-esr";

    explicit CompanionStage(std::chrono::milliseconds patience = std::chrono::seconds(30),
                            std::chrono::milliseconds listenAgainAfter = std::chrono::seconds(5))
        : server(QFile::encodeName(m_folder.path()), m_system.path(QStringLiteral("proc")), patience,
                 listenAgainAfter)
    {
        if (!server.listen().ok())
            qFatal("the test's server cannot listen");
    }

    QString socketPath() const { return m_folder.filePath(QLatin1StringView(companionSocketName)); }

    /// From now on the test's process is the relay of this browser.
    void beRelayOf(const QString &executable)
    {
        constexpr qint32 browser = 4'000'001; // above the kernel's largest number, so never the test's own
        m_system.addProcess({browser, executable});
        m_system.addProcess({qint32(getpid()), QStringLiteral("/usr/bin/relay"), browser});
    }

    /// A connection from that browser, taken by the server; its welcome is still to be read.
    std::unique_ptr<CompanionClient> connect(const char *executable = chromium)
    {
        beRelayOf(QString::fromUtf8(executable));
        auto client = std::make_unique<CompanionClient>(socketPath());
        if (!QTest::qWaitFor([&] { return client->socket().bytesAvailable() > 0; }, 3000))
            qFatal("the server says no welcome");
        return client;
    }

    /// The same, with its windows told and the welcome read.
    std::unique_ptr<CompanionClient> connectAndTell(const char *executable, const QByteArray &windows,
                                                    const QByteArray &focused = "null",
                                                    bool privateWindows = true)
    {
        auto client = connect(executable);
        client->next();
        client->tell(windows, focused, privateWindows);
        return client;
    }

private:
    MadeSystem m_system;
    QTemporaryDir m_folder;

public:
    CompanionServer server;
};
