#include "BackendCall.h"

#include "backendRedirects.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestAnswer = 8 * 1024 * 1024; // bytes, unpacked
constexpr qsizetype piece = 64 * 1024; // read at once: a packed answer is unpacked as it is read
constexpr int mostRedirects = 20;

QNetworkRequest onTheWire(const BackendRequest &request)
{
    QNetworkRequest wire(request.url);
    wire.setTransferTimeout(static_cast<int>(request.timeout.count()));
    wire.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    wire.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    wire.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    wire.setRawHeader("User-Agent", "Quorvel/" QUORVEL_VERSION);
    wire.setRawHeader("Accept-Language", "*");
    wire.setRawHeader("Connection", "close");
    if (request.body)
        wire.setRawHeader("Content-Type", "application/json");
    if (!request.authorization.isEmpty())
        wire.setRawHeader("Authorization", request.authorization);
    return wire;
}

std::optional<int> statusOf(const QNetworkReply &reply)
{
    const auto status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return status.isValid() ? std::optional(status.toInt()) : std::nullopt;
}

/// Qt calls an answer from 400 on an error too, though it came whole.
bool isOnlyTheStatus(const QNetworkReply &reply)
{
    const int error = reply.error();
    const bool ofTheContent =
        error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
    const bool ofTheServer = error >= QNetworkReply::InternalServerError;
    return statusOf(reply).value_or(0) >= 400 && (ofTheContent || ofTheServer);
}

BackendError transportError(QNetworkReply::NetworkError error, const QString &description)
{
    return {u"QNetworkReply"_s, error, description};
}

} // namespace

BackendCall::BackendCall(QNetworkAccessManager &network, BackendRequest request, BackendClient::Done done,
                         QObject *parent)
    : QObject(parent)
    , m_network(network)
    , m_request(std::move(request))
    , m_done(std::move(done))
{
    send();
}

void BackendCall::send()
{
    m_answer.clear();
    const auto wire = onTheWire(m_request);
    m_reply = m_request.body ? m_network.post(wire, *m_request.body) : m_network.get(wire);
    m_reply->setParent(this);
    connect(m_reply, &QNetworkReply::readyRead, this, &BackendCall::collect);
    connect(m_reply, &QNetworkReply::finished, this, &BackendCall::conclude);
}

void BackendCall::collect()
{
    while (m_answer.size() <= largestAnswer) {
        const auto more = m_reply->read(piece);
        if (more.isEmpty())
            return;
        m_answer += more;
    }
    if (!m_tooLarge) {
        m_tooLarge = true;
        m_reply->abort();
    }
}

void BackendCall::conclude()
{
    if (!m_tooLarge)
        collect();
    if (!follow())
        give(answer());
}

bool BackendCall::follow()
{
    if (transportFailure() || m_redirects == mostRedirects)
        return false;
    auto next = redirected(m_request, statusOf(*m_reply).value_or(0), m_reply->rawHeader("Location"));
    if (!next)
        return false;
    ++m_redirects;
    m_request = std::move(*next);
    m_reply->deleteLater();
    send();
    return true;
}

BackendAnswer BackendCall::answer() const
{
    if (const auto failure = transportFailure())
        return *failure;
    if (const auto refusal = validateBackendResponse(statusOf(*m_reply), m_answer))
        return *refusal;
    return decodeJSONObject(m_answer);
}

std::optional<BackendError> BackendCall::transportFailure() const
{
    if (m_tooLarge)
        return transportError(QNetworkReply::OperationCanceledError, u"The answer is larger than 8 MiB."_s);
    if (m_reply->error() == QNetworkReply::NoError || isOnlyTheStatus(*m_reply))
        return std::nullopt;
    return transportError(m_reply->error(), m_reply->errorString());
}

void BackendCall::give(const BackendAnswer &answer)
{
    // Once more through the event loop: whoever is told may delete the client, and the reply is still busy.
    QMetaObject::invokeMethod(
        parent(), [done = std::move(m_done), answer] { done(answer); }, Qt::QueuedConnection);
    deleteLater();
}
