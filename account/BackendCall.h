#pragma once

#include "BackendClient.h"
#include "BackendRequest.h"

#include <QObject>

class QNetworkAccessManager;
class QNetworkReply;

/// One call under way, through its redirects. Deletes itself at the end; deleted before, it says nothing.
class BackendCall : public QObject
{
public:
    BackendCall(QNetworkAccessManager &network, BackendRequest request, BackendClient::Done done,
                QObject *parent);

private:
    void send();
    void collect();
    void conclude();
    bool follow();
    BackendAnswer answer() const;
    std::optional<BackendError> transportFailure() const;
    void give(const BackendAnswer &answer);

    QNetworkAccessManager &m_network;
    BackendRequest m_request;
    BackendClient::Done m_done;
    QNetworkReply *m_reply = nullptr;
    QByteArray m_answer;
    bool m_tooLarge = false;
    int m_redirects = 0;
};
