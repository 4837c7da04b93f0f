#include "BackendAnswer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> decodedUtf8(const QByteArray &bytes)
{
    // Stateless: a character cut off at the end is an error, not something to be continued. The mark at the
    // start of a text belongs to the text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

/// Qt's parser takes only objects and arrays for a whole text, but a number or null is JSON too.
bool isLoneValue(const QByteArray &body)
{
    const auto wrapped = QJsonDocument::fromJson('[' + body + ']');
    return wrapped.isArray() && wrapped.array().size() == 1;
}

BackendError noObject()
{
    return {backendErrorDomain(), backendNoObject, u"Invalid backend JSON."_s};
}

} // namespace

QString backendErrorDomain()
{
    return u"QuorvelBackend"_s;
}

std::optional<BackendError> validateBackendResponse(std::optional<int> status, const QByteArray &body)
{
    if (status && *status >= 200 && *status < 300)
        return std::nullopt;
    return BackendError{backendErrorDomain(), backendRefused, decodedUtf8(body).value_or(u"Backend error"_s)};
}

BackendAnswer decodeJSONObject(const QByteArray &body)
{
    QJsonParseError problem;
    const auto document = QJsonDocument::fromJson(body, &problem);
    if (document.isObject())
        return document.object();
    if (document.isArray() || isLoneValue(body))
        return noObject();
    return BackendError{u"QJsonParseError"_s, problem.error, problem.errorString()};
}
