#pragma once

#include <QString>
#include <QUrl>

#include <algorithm>

/// Whether a browser could show the text as an address: not empty, no white space, no control characters, and
/// a URL by a browser's own forgiving reading, which leaves "%zz" or "{}" in a query as they are.
inline bool isBrowserAddress(const QString &text)
{
    const bool inOnePiece = std::none_of(text.begin(), text.end(), [](QChar letter) {
        return letter.isSpace() || letter.category() == QChar::Other_Control;
    });
    return inOnePiece && QUrl(text, QUrl::TolerantMode).isValid(); // an empty one is not valid
}
