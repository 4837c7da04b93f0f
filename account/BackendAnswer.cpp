#include "BackendAnswer.h"

#include "decodedUtf8.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

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
