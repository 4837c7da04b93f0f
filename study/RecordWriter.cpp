#include "RecordWriter.h"

#include "recordText.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

constexpr qsizetype longestUnit = 6; // "\u001f"; three bytes of UTF-8 are less

char *writeEscape(char *to, char16_t unit)
{
    *to++ = '\\';
    switch (unit) {
    case u'"':
    case u'\\':
        *to++ = char(unit);
        return to;
    case u'\b':
        *to++ = 'b';
        return to;
    case u'\f':
        *to++ = 'f';
        return to;
    case u'\n':
        *to++ = 'n';
        return to;
    case u'\r':
        *to++ = 'r';
        return to;
    case u'\t':
        *to++ = 't';
        return to;
    default:
        for (const char digit : {'u', '0', '0', "01"[unit >> 4], "0123456789abcdef"[unit & 0xF]})
            *to++ = digit;
        return to;
    }
}

/// UTF-8 of a code point from U+0080 on.
char *writeCodePoint(char *to, char32_t code)
{
    const auto continuation = [code](int shift) { return char(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x800) {
        *to++ = char(0xC0 | code >> 6);
    } else {
        if (code < 0x10000) {
            *to++ = char(0xE0 | code >> 12);
        } else {
            *to++ = char(0xF0 | code >> 18);
            *to++ = continuation(12);
        }
        *to++ = continuation(6);
    }
    *to++ = continuation(0);
    return to;
}

/// Takes one code point from the start of `text`; U+FFFD for half a surrogate pair.
char32_t takeCodePoint(const char16_t *&text, const char16_t *end)
{
    const char16_t unit = *text++;
    if (!QChar::isSurrogate(unit))
        return unit;
    if (QChar::isHighSurrogate(unit) && text != end && QChar::isLowSurrogate(*text))
        return QChar::surrogateToUcs4(unit, *text++);
    return QChar::ReplacementCharacter;
}

} // namespace

QByteArray RecordWriter::take()
{
    m_bytes.truncate(m_length);
    m_length = 0;
    return std::exchange(m_bytes, {});
}

void RecordWriter::writeByte(char byte)
{
    char *const to = roomFor(1);
    *to = byte;
    writtenTo(to + 1);
}

void RecordWriter::writeKey(std::string_view key)
{
    char *to = roomFor(qsizetype(key.size()) + 4);
    if (!m_firstKey)
        *to++ = ',';
    m_firstKey = false;
    *to++ = '"';
    to = std::copy(key.begin(), key.end(), to);
    *to++ = '"';
    *to++ = ':';
    writtenTo(to);
}

void RecordWriter::writeValue(qint64 number)
{
    constexpr qsizetype longest = 20; // "-9223372036854775808"
    char *const to = roomFor(longest);
    writtenTo(std::to_chars(to, to + longest, number).ptr);
}

void RecordWriter::writeValue(const QString &text)
{
    char *to = roomFor(text.size() * longestUnit + 2);
    *to++ = '"';
    const auto *unit = reinterpret_cast<const char16_t *>(text.utf16());
    const auto *const end = unit + text.size();
    while (unit != end) {
        if (*unit < 0x20 || *unit == u'"' || *unit == u'\\')
            to = writeEscape(to, *unit++);
        else if (*unit < 0x80)
            *to++ = char(*unit++);
        else
            to = writeCodePoint(to, takeCodePoint(unit, end));
    }
    *to++ = '"';
    writtenTo(to);
}

void RecordWriter::writeValue(const QStringList &list)
{
    writeByte('[');
    for (qsizetype index = 0; index < list.size(); ++index) {
        if (index > 0)
            writeByte(',');
        writeValue(list.at(index));
    }
    writeByte(']');
}

void RecordWriter::writeValue(const QUuid &id)
{
    char *to = roomFor(recordIdLength + 2);
    *to++ = '"';
    to = writeRecordId(to, id);
    *to++ = '"';
    writtenTo(to);
}

void RecordWriter::writeValue(const QDateTime &time)
{
    char *to = roomFor(recordTimeLength + 2);
    *to++ = '"';
    to = writeRecordTime(to, time);
    *to++ = '"';
    writtenTo(to);
}

char *RecordWriter::roomFor(qsizetype most)
{
    if (m_bytes.size() - m_length < most)
        m_bytes.resize(std::max(m_bytes.size() * 2, m_length + most));
    return m_bytes.data() + m_length;
}

void RecordWriter::writtenTo(const char *end)
{
    m_length = end - m_bytes.constData();
}
