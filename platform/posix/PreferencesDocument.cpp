#include "PreferencesDocument.h"

PreferencesDocument PreferencesDocument::fromBytes(const QByteArray &bytes)
{
    PreferencesDocument document;
    const QByteArray byteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");
    qsizetype start = bytes.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    while (start < bytes.size()) {
        const qsizetype lineEnd = bytes.indexOf('\n', start);
        const qsizetype end = lineEnd < 0 ? bytes.size() : lineEnd;
        QByteArray line = bytes.mid(start, end - start);
        while (line.endsWith('\r')) // were one left, the next reading would take it for a line end's
            line.chop(1);
        start = end + 1;

        const PreferenceLine meant = readPreferenceLine(line);
        if (meant.kind == PreferenceLine::Kind::Blank)
            document.m_lines.push_back(line);
        else if (meant.kind == PreferenceLine::Kind::Value)
            document.append(meant.key, meant.value, line);
        else
            ++document.m_linesNotUnderstood;
    }
    return document;
}

QByteArray PreferencesDocument::bytes() const
{
    qsizetype size = 0;
    for (const auto &line : m_lines)
        size += line ? line->size() + 1 : 0;
    QByteArray bytes;
    bytes.reserve(size);
    for (const auto &line : m_lines) {
        if (line)
            bytes += *line + '\n';
    }
    return bytes;
}

std::optional<PreferenceValue> PreferencesDocument::value(const QString &key) const
{
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? std::nullopt : std::optional(found->value);
}

void PreferencesDocument::set(const QString &key, const std::optional<PreferenceValue> &value)
{
    const auto found = m_entries.find(key);
    if (!value) {
        remove(key);
    } else if (found == m_entries.end()) {
        append(key, *value, writePreferenceLine(key, value));
    } else {
        found->value = *value;
        m_lines[found->line] = writePreferenceLine(key, value);
    }
}

void PreferencesDocument::append(const QString &key, const PreferenceValue &value, const QByteArray &line)
{
    remove(key);
    m_entries.insert(key, {value, m_lines.size()});
    m_lines.push_back(line);
}

void PreferencesDocument::remove(const QString &key)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return;
    m_lines[found->line].reset();
    m_entries.erase(found);
}
