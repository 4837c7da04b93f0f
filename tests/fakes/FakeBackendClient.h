#pragma once

#include "BackendClient.h"

#include <deque>
#include <optional>

/// A backend that remembers what it was asked and answers when, and what, the test says.
class FakeBackendClient : public BackendClient
{
public:
    struct Call
    {
        QString method; ///< "POST" or "GET"
        QString path;
        QJsonObject body;
        Done done;
    };

    std::deque<Call> calls; ///< those that are not answered yet, oldest first

    void postJSON(const QString &path, const QJsonObject &body, Done done) override
    {
        calls.push_back({QStringLiteral("POST"), path, body, std::move(done)});
    }
    void getJSON(const QString &path, Done done) override
    {
        calls.push_back({QStringLiteral("GET"), path, {}, std::move(done)});
    }

    /// Answers the call at `place`.
    void answer(const BackendAnswer &answer, size_t place = 0)
    {
        const auto done = std::move(calls.at(place).done);
        calls.erase(calls.begin() + std::ptrdiff_t(place));
        done(answer);
    }
};
