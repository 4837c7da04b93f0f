#pragma once

#include <QStringView>

#include <algorithm>

/// Whether a text holds a control character, such as a line break or NUL. A session token that does would
/// break out of the header it is sent in.
inline bool hasControlCharacters(QStringView text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar character) { return character.category() == QChar::Other_Control; });
}
