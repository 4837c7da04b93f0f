#pragma once

#include "BackendClient.h"
#include "BackendRequest.h"
#include "Preferences.h"

#include <QObject>

/// How long the wire may stay silent, or a call may take, before it fails.
struct BackendTimeouts
{
    std::chrono::milliseconds post{60'000};
    /// What Qt takes where a time-out is asked for without saying how long.
    std::chrono::milliseconds get{30'000};
    /// For all of a call, its redirects too: an answer may come slowly, but not for ever.
    std::chrono::milliseconds whole{300'000};
};

/// Calls the backend over HTTP. What is posted is posted once; a GET whose connection closes before an answer
/// Qt may send up to four times. docs/decisions/0013-what-the-backend-is-sent.md has the reasons.
class NetworkBackendClient : public QObject, public BackendClient
{
    Q_OBJECT

public:
    using Timeouts = BackendTimeouts;

    /// `preferences` outlives this object.
    explicit NetworkBackendClient(Preferences &preferences, Timeouts timeouts = {},
                                  QObject *parent = nullptr);

    void postJSON(const QString &path, const QJsonObject &body, Done done) override;
    void getJSON(const QString &path, Done done) override;

private:
    QByteArray authorization() const;
    QByteArray language() const;
    void start(BackendRequest request, Done done);

    Preferences &m_preferences;
    Timeouts m_timeouts;
};
