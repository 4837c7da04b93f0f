#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <variant>

/// Why a call of the backend gave no object. `description` is fit to show a user and never holds the session
/// token.
struct BackendError
{
    QString domain; ///< backendErrorDomain() for the two codes below, else the name of who reports it
    int code = 0;
    QString description;

    bool operator==(const BackendError &) const = default;
};

/// "QuorvelBackend".
QString backendErrorDomain();

/// Codes of that domain.
inline constexpr int backendRefused = 1;  ///< no HTTP answer, or a status outside 200 to 299
inline constexpr int backendNoObject = 2; ///< JSON, but no object

/// What a call of the backend gives: the JSON object of its answer, or why there is none.
using BackendAnswer = std::variant<QJsonObject, BackendError>;

/// The error of an answer whose status is not 200 to 299: its description is the whole body, or "Backend
/// error" where that is no UTF-8. `status` is none where the answer came by no HTTP.
std::optional<BackendError> validateBackendResponse(std::optional<int> status, const QByteArray &body);

/// The object that a body is; the parser's own error where it is no JSON.
BackendAnswer decodeJSONObject(const QByteArray &body);
