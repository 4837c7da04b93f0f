#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Reading and adding to the key files of freedesktop: desktop entries, mimeapps.list, mimeinfo.cache. They
// are handled as bytes, for what is not understood has to stay as it is.

/// The value of the first line "KEY=VALUE" of the group, spaces around it left out; none where there is no
/// such line.
std::optional<QByteArray> keyFileValue(const QByteArray &bytes, const QByteArray &group,
                                       const QByteArray &key);

/// Whether any group has a line for that key.
bool keyFileHasKey(const QByteArray &bytes, const QByteArray &key);

/// `bytes` with the line added to the first group of that name, as its first one; the group is added at the
/// end where there is none. All other bytes stay. `line` comes without its end.
QByteArray keyFileWithLine(const QByteArray &bytes, const QByteArray &group, const QByteArray &line);

/// The value of an Exec key that starts the program at this absolute path with one address. Quotes and
/// backslashes only where the path needs them, for xdg-open without a desktop environment understands none.
QByteArray execValue(const QString &program);
