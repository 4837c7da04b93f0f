#pragma once

#include "BackendAnswer.h"

#include <functional>

/// Calls of the program's own backend. Nothing blocks: `done` is called later, once, from the event loop of
/// the thread that called, and not at all once this object is gone. Several calls may be under way at once
/// and end in any order; nothing is tried again.
class BackendClient
{
public:
    using Done = std::function<void(const BackendAnswer &)>;

    virtual ~BackendClient() = default;

    /// Posts a JSON object, with the stored session token where there is one. `path` begins with "/".
    virtual void postJSON(const QString &path, const QJsonObject &body, Done done) = 0;

    /// Gets an object; never with the token.
    virtual void getJSON(const QString &path, Done done) = 0;
};
