#include "BackendCall.h"

#include "backendRedirects.h"

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestAnswer = 8 * 1024 * 1024; // bytes, unpacked
constexpr qsizetype piece = 64 * 1024; // read at once: a packed answer is unpacked as it is read
constexpr int mostRedirects = 20;

/// Bytes that are there once. Where a connection closes before an answer, Qt sends a request anew, up to
/// three times: four codes by e-mail for one that was asked for. Without the bytes only a head goes out
/// again, which no server takes for a request.
class ReadOnce : public QIODevice
{
public:
    explicit ReadOnce(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }
    /// Asked for before a request is sent again, but also where a redirect could keep the body.
    bool seek(qint64) override
    {
        m_position = m_bytes.size();
        return true;
    }
    bool atEnd() const override { return m_position == m_bytes.size(); }
    qint64 bytesAvailable() const override
    {
        return m_bytes.size() - m_position + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (atEnd())
            return -1;
        const auto size = std::min<qint64>(maxSize, m_bytes.size() - m_position);
        std::copy_n(m_bytes.constData() + m_position, size, data);
        m_position += size;
        return size;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_position = 0;
};

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
    wire.setRawHeader("Accept-Language", request.language);
    wire.setRawHeader("Connection", "close");
    if (request.body) {
        wire.setRawHeader("Content-Type", "application/json");
        wire.setHeader(QNetworkRequest::ContentLengthHeader, request.body->size());
        wire.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    }
    if (!request.authorization.isEmpty())
        wire.setRawHeader("Authorization", request.authorization);
    return wire;
}

/// Qt gives a file that it has read the status 200.
std::optional<int> statusOf(const QNetworkReply &reply)
{
    if (!reply.url().scheme().startsWith("http"_L1))
        return std::nullopt;
    const auto status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return status.isValid() ? std::optional(status.toInt()) : std::nullopt;
}

/// Qt calls an answer from 400 on an error too, though it came whole.
bool isOnlyTheStatus(const QNetworkReply &reply)
{
    const auto status = statusOf(reply).value_or(0);
    const auto error = reply.error();
    if (status < 400)
        return false;
    if (status == 407)
        return error == QNetworkReply::ProxyAuthenticationRequiredError;
    return error == QNetworkReply::ProtocolInvalidOperationError ||
           (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
           (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

BackendError transportError(QNetworkReply::NetworkError error, const QString &description)
{
    return {u"QNetworkReply"_s, error, description};
}

BackendError connectionClosed()
{
    return transportError(QNetworkReply::RemoteHostClosedError, u"Connection closed"_s);
}

/// Where all has come at once, Qt can take the end of the connection for the end of the answer.
bool isCutOff(const QNetworkReply &reply, qsizetype received)
{
    bool isSaid = false;
    const auto length = reply.rawHeader("Content-Length").toLongLong(&isSaid);
    return isSaid && statusOf(reply) != 304 && !reply.hasRawHeader("Content-Encoding") && received < length;
}

} // namespace

BackendCall::BackendCall(BackendRequest request, std::chrono::milliseconds longest, BackendClient::Done done,
                         QObject *parent)
    : QObject(parent)
    , m_request(std::move(request))
    , m_done(std::move(done))
{
    m_longest.setSingleShot(true);
    connect(&m_longest, &QTimer::timeout, this, [this] {
        m_tooLong = true;
        m_reply->abort();
    });
    m_longest.start(longest);
    send();
}

void BackendCall::send()
{
    // One for each request, so that each has a connection of its own. Qt sends the next request into one that
    // the server is about to close, and nothing posted is sent twice.
    if (m_network)
        m_network->deleteLater();
    m_network = new QNetworkAccessManager(this);
    m_answer.clear();
    const auto wire = onTheWire(m_request);
    if (m_request.body) {
        auto *body = new ReadOnce(*m_request.body);
        m_reply = m_network->post(wire, body);
        body->setParent(m_reply);
    } else {
        m_reply = m_network->get(wire);
    }
    connect(m_reply, &QNetworkReply::readyRead, this, &BackendCall::collect);
    connect(m_reply, &QNetworkReply::finished, this, &BackendCall::conclude);
}

void BackendCall::collect()
{
    while (m_reply->isOpen() && m_answer.size() <= largestAnswer) {
        const auto more = m_reply->read(piece);
        if (more.isEmpty())
            return;
        m_answer += more;
    }
    if (m_answer.size() > largestAnswer && !m_tooLarge) {
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
    if (m_tooLong)
        return transportError(QNetworkReply::OperationCanceledError, u"The answer took too long."_s);
    if (m_reply->error() == QNetworkReply::NoError || isOnlyTheStatus(*m_reply))
        return isCutOff(*m_reply, m_answer.size()) ? std::optional(connectionClosed()) : std::nullopt;
    if (m_request.body && m_reply->error() == QNetworkReply::UnknownNetworkError) // stopped by ReadOnce
        return connectionClosed();
    return transportError(m_reply->error(), m_reply->errorString());
}

void BackendCall::give(const BackendAnswer &answer)
{
    m_longest.stop();
    // Once more through the event loop: whoever is told may delete the client, and the reply is still busy.
    QMetaObject::invokeMethod(
        parent(), [done = std::move(m_done), answer] { done(answer); }, Qt::QueuedConnection);
    deleteLater();
}
