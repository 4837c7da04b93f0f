#pragma once

#include "BackendClient.h"
#include "BackendRequest.h"

#include <QObject>
#include <QTimer>

class QNetworkAccessManager;
class QNetworkReply;

/// One call under way, through its redirects. Deletes itself at the end; deleted before, it says nothing.
class BackendCall : public QObject
{
public:
    /// Fails where it has not ended within `longest`.
    BackendCall(BackendRequest request, std::chrono::milliseconds longest, BackendClient::Done done,
                QObject *parent);

private:
    void send();
    void collect();
    void conclude();
    bool follow();
    BackendAnswer answer() const;
    std::optional<BackendError> transportFailure() const;
    void give(const BackendAnswer &answer);

    BackendRequest m_request;
    BackendClient::Done m_done;
    QNetworkAccessManager *m_network = nullptr;
    QNetworkReply *m_reply = nullptr; ///< goes with m_network
    QByteArray m_answer;
    QTimer m_longest;
    bool m_tooLarge = false;
    bool m_tooLong = false;
    int m_redirects = 0;
};
