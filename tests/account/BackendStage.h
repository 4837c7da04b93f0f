#pragma once

#include "FakePreferences.h"
#include "MisbehavingServer.h"
#include "NetworkBackendClient.h"
#include "patience.h"
#include "preferenceKeys.h"

#include <QNetworkProxy>
#include <QTest>

#include <memory>

/// A client, its preferences and the server it talks to. No call leaves this machine.
struct BackendStage
{
    FakePreferences preferences;
    MisbehavingServer server;
    std::unique_ptr<NetworkBackendClient> client;

    BackendStage() { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }

    /// Forgets what a test before has set and received.
    void reset()
    {
        server.forget();
        preferences.values.clear();
        setBase(server.base());
        renew({std::chrono::milliseconds(patience), std::chrono::milliseconds(patience)});
    }
    void renew(BackendTimeouts timeouts)
    {
        client = std::make_unique<NetworkBackendClient>(preferences, timeouts);
    }
    void setBase(const QString &base) { preferences.values[PreferenceKeys::backendBaseURL()] = base; }
    void setToken(const QString &token) { preferences.values[PreferenceKeys::serverSessionToken()] = token; }

    BackendAnswer get(const QString &path)
    {
        return answered([&](BackendClient::Done done) { client->getJSON(path, std::move(done)); });
    }
    BackendAnswer post(const QString &path, const QJsonObject &body = {})
    {
        return answered([&](BackendClient::Done done) { client->postJSON(path, body, std::move(done)); });
    }

private:
    template <typename Call>
    BackendAnswer answered(Call call)
    {
        std::optional<BackendAnswer> answer;
        call([&answer](const BackendAnswer &given) { answer = given; });
        if (answer || !QTest::qWaitFor([&] { return answer.has_value(); }, patience))
            return BackendError{QStringLiteral("test"), 0, QStringLiteral("answered at once, or never")};
        return *answer;
    }
};

/// Bytes as the paths of the server want them.
inline QString hex(const QByteArray &bytes)
{
    return bytes.isEmpty() ? QStringLiteral("-") : QString::fromLatin1(bytes.toHex());
}

/// The path that is answered with this status, body and, each by itself, further lines of the head.
inline QString answerPath(int status, const QByteArray &body, const QByteArrayList &lines = {})
{
    auto path = QStringLiteral("/answer/%1/%2").arg(status).arg(hex(body));
    for (const auto &line : lines)
        path += u'/' + hex(line);
    return path;
}

inline BackendError refused(const QString &description)
{
    return {backendErrorDomain(), backendRefused, description};
}

/// The code of a transport failure; none where the answer is anything else.
inline std::optional<int> transportCode(const BackendAnswer &answer)
{
    const auto *error = std::get_if<BackendError>(&answer);
    if (!error || error->domain != QStringLiteral("QNetworkReply") || error->description.isEmpty())
        return std::nullopt;
    return error->code;
}
