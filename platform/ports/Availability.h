#pragma once

#include <QString>

/// Whether a means of the operating system can be used here. The two sentences are empty exactly while it
/// works.
struct Availability
{
    bool works = true;
    QString reasonEnglish; ///< one sentence fit to show a user: why it does not work
    QString reasonRussian; ///< the same sentence in Russian

    static Availability working() { return {}; }
    static Availability missing(const QString &english, const QString &russian)
    {
        return {false, english, russian};
    }

    bool operator==(const Availability &) const = default;
};
