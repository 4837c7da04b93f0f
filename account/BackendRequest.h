#pragma once

#include <QByteArray>
#include <QUrl>

#include <chrono>
#include <optional>

/// What is asked of the backend, as far as it goes over the wire.
struct BackendRequest
{
    QUrl url;
    std::optional<QByteArray> body;       ///< none: GET, else POST of this JSON
    QByteArray authorization;             ///< value of the header of that name; empty: not sent
    QByteArray language = "en";           ///< in which a refusal is to be told: "en" or "ru"
    std::chrono::milliseconds timeout{0}; ///< of silence on the wire; 0 waits for ever

    bool operator==(const BackendRequest &) const = default;
};
