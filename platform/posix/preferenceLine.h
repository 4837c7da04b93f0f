#pragma once

#include "Preferences.h"

#include <QByteArray>

/// The text form of one preference: `key = value` in UTF-8, the value a JSON scalar as in `true`, `1500` or
/// `"ru"`. Blanks and tabs around key and value do not count. An integer has no fraction and no exponent and
/// fits 64 signed bits; a string is a JSON string, in which `\u` may also name half a surrogate pair.

/// What a line without its line end says.
struct PreferenceLine
{
    enum class Kind {
        Blank, ///< empty, or a comment: its first character is "#"
        Value,
        Removal, ///< `key = null`: the key has no value (in a journal only)
        NotUnderstood,
    };

    Kind kind = Kind::NotUnderstood;
    QString key;                   ///< of a value or a removal
    PreferenceValue value = false; ///< of a value

    bool operator==(const PreferenceLine &) const = default;
};

/// A key has one letter, digit, "-", "_" or "." at least and nothing else; letters and digits of ASCII.
bool isPreferenceKey(const QString &key);

PreferenceLine readPreferenceLine(const QByteArray &line);

/// The line of a value, or of a removal where there is none; without its line end. Always one line of valid
/// UTF-8 that reads as what was written.
QByteArray writePreferenceLine(const QString &key, const std::optional<PreferenceValue> &value);
