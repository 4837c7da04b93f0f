#include "keyFiles.h"

#include <QList>

#include <algorithm>
#include <cstring>

namespace {

struct Line
{
    QByteArray text; ///< trimmed
    qsizetype end;   ///< where the next one begins
};

/// The line that begins at `start`, which is before the end.
Line lineAt(const QByteArray &bytes, qsizetype start)
{
    const auto feed = bytes.indexOf('\n', start);
    const auto end = feed < 0 ? bytes.size() : feed + 1;
    return {bytes.sliced(start, end - start).trimmed(), end};
}

bool isHeader(const QByteArray &line)
{
    return line.startsWith('[');
}

/// The part before "=", or nothing where the line holds no key.
QByteArray keyOf(const QByteArray &line)
{
    const auto equals = line.indexOf('=');
    if (equals < 0 || isHeader(line) || line.startsWith('#'))
        return {};
    return line.first(equals).trimmed();
}

/// Whether the character may stand in a word of Exec without quotes.
bool isPlain(char character)
{
    return std::strchr(" \t\n\r\"'\\><~|&;$*?#()`", character) == nullptr;
}

/// As a word in quotes, by the rules of Exec alone.
QByteArray quoted(const QByteArray &word)
{
    QByteArray result = "\"";
    for (const char character : word) {
        if (std::strchr("\"`$\\", character))
            result += '\\';
        result += character;
    }
    return result + '"';
}

/// By the rules of every text in a desktop entry.
QByteArray escaped(QByteArray text)
{
    return text.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
}

} // namespace

std::optional<QByteArray> keyFileValue(const QByteArray &bytes, const QByteArray &group,
                                       const QByteArray &key)
{
    const QByteArray header = '[' + group + ']';
    bool inGroup = false;
    for (qsizetype at = 0; at < bytes.size();) {
        const auto line = lineAt(bytes, at);
        at = line.end;
        if (isHeader(line.text))
            inGroup = line.text == header;
        else if (inGroup && keyOf(line.text) == key)
            return line.text.sliced(line.text.indexOf('=') + 1).trimmed();
    }
    return std::nullopt;
}

bool keyFileHasKey(const QByteArray &bytes, const QByteArray &key)
{
    const auto lines = bytes.split('\n');
    return std::any_of(lines.begin(), lines.end(),
                       [&](const QByteArray &line) { return keyOf(line.trimmed()) == key; });
}

QByteArray keyFileWithLine(const QByteArray &bytes, const QByteArray &group, const QByteArray &line)
{
    const QByteArray header = '[' + group + ']';
    for (qsizetype at = 0; at < bytes.size();) {
        const auto present = lineAt(bytes, at);
        at = present.end;
        if (present.text == header) {
            const QByteArray feed = bytes.at(at - 1) == '\n' ? "" : "\n";
            return bytes.first(at) + feed + line + '\n' + bytes.sliced(at);
        }
    }
    const bool needsFeed = !bytes.isEmpty() && !bytes.endsWith('\n');
    return bytes + (needsFeed ? "\n" : "") + header + '\n' + line + '\n';
}

QByteArray execValue(const QString &program)
{
    auto path = program.toUtf8();
    const bool isAllPlain = std::all_of(path.begin(), path.end(), isPlain);
    // GLib looks for the first word without turning "%%" into "%", so such a path may not be the first.
    const QByteArray before = path.contains('%') ? "env " : "";
    path.replace('%', "%%");
    return before + escaped(isAllPlain ? path : quoted(path)) + " %u";
}
