#include "preferenceLine.h"

#include <QStringDecoder>

#include <algorithm>
#include <charconv>

using namespace Qt::StringLiterals;

namespace {

bool isAsciiDigit(char16_t character)
{
    return character >= u'0' && character <= u'9';
}

QByteArray withoutBlanks(const QByteArray &text)
{
    const auto isBlank = [](char character) { return character == ' ' || character == '\t'; };
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    return QByteArray(first, last - first);
}

/// An integer as JSON writes it: no plus sign, no leading zero, no fraction, no exponent.
std::optional<qint64> readInteger(const QByteArray &text)
{
    const QByteArray digits = text.startsWith('-') ? text.mid(1) : text;
    if (digits.size() > 1 && digits.startsWith('0'))
        return std::nullopt;
    qint64 number = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
    if (error != std::errc() || end != text.end())
        return std::nullopt;
    return number;
}

/// The character that a `\` and `letter` stand for, other than `\u`.
std::optional<char16_t> escapedCharacter(QChar letter)
{
    switch (letter.unicode()) {
    case u'"':
    case u'\\':
    case u'/':
        return letter.unicode();
    case u'b':
        return u'\b';
    case u'f':
        return u'\f';
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    default:
        return std::nullopt;
    }
}

std::optional<char16_t> readFourHexDigits(QStringView text)
{
    if (text.size() != 4)
        return std::nullopt;
    char16_t unit = 0;
    for (const QChar character : text) {
        const char16_t code = character.unicode();
        const char16_t lower = code | 0x20;
        if (isAsciiDigit(code))
            unit = char16_t(unit * 16 + (code - u'0'));
        else if (lower >= u'a' && lower <= u'f')
            unit = char16_t(unit * 16 + (lower - u'a' + 10));
        else
            return std::nullopt;
    }
    return unit;
}

/// The string that is written between the quotation marks of `inside`.
std::optional<QString> unescaped(const QString &inside)
{
    QString text;
    text.reserve(inside.size());
    for (qsizetype i = 0; i < inside.size(); ++i) {
        const QChar character = inside[i];
        if (character == u'"' || character.unicode() < 0x20)
            return std::nullopt;
        if (character != u'\\') {
            text += character;
            continue;
        }
        if (++i == inside.size())
            return std::nullopt;
        const bool isUnit = inside[i] == u'u';
        const auto meant =
            isUnit ? readFourHexDigits(QStringView(inside).mid(i + 1, 4)) : escapedCharacter(inside[i]);
        if (!meant)
            return std::nullopt;
        text += QChar(*meant);
        if (isUnit)
            i += 4;
    }
    return text;
}

std::optional<QString> readString(const QByteArray &text)
{
    if (text.size() < 2 || !text.startsWith('"') || !text.endsWith('"'))
        return std::nullopt;
    // Without ConvertInitialBom a string that begins with U+FEFF would lose it.
    QStringDecoder decode(QStringDecoder::Utf8,
                          QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString inside = decode(QByteArrayView(text).sliced(1, text.size() - 2));
    if (decode.hasError())
        return std::nullopt;
    return unescaped(inside);
}

std::optional<PreferenceValue> readValue(const QByteArray &text)
{
    if (text == "true" || text == "false")
        return PreferenceValue(text == "true");
    if (const auto number = readInteger(text))
        return PreferenceValue(*number);
    if (const auto string = readString(text))
        return PreferenceValue(*string);
    return std::nullopt;
}

bool isHalfSurrogatePair(const QString &text, qsizetype i)
{
    if (text[i].isHighSurrogate())
        return i + 1 == text.size() || !text[i + 1].isLowSurrogate();
    return text[i].isLowSurrogate() && (i == 0 || !text[i - 1].isHighSurrogate());
}

QByteArray written(const QString &text)
{
    QString inside;
    inside.reserve(text.size() + 2);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        if (character == u'"' || character == u'\\')
            inside += u'\\' + QString(character);
        else if (character == u'\n')
            inside += u"\\n"_s;
        else if (character == u'\t')
            inside += u"\\t"_s;
        else if (character.unicode() < 0x20 || character.unicode() == 0x7f || isHalfSurrogatePair(text, i))
            inside += u"\\u%1"_s.arg(uint(character.unicode()), 4, 16, QChar(u'0'));
        else
            inside += character;
    }
    return '"' + inside.toUtf8() + '"';
}

QByteArray written(const std::optional<PreferenceValue> &value)
{
    if (!value)
        return "null";
    if (const bool *flag = std::get_if<bool>(&*value))
        return *flag ? "true" : "false";
    if (const qint64 *number = std::get_if<qint64>(&*value))
        return QByteArray::number(*number);
    return written(std::get<QString>(*value));
}

} // namespace

bool isPreferenceKey(const QString &key)
{
    return !key.isEmpty() && std::all_of(key.begin(), key.end(), [](QChar character) {
        const char16_t code = character.unicode();
        const char16_t lower = code | 0x20;
        return isAsciiDigit(code) || (code < 0x80 && lower >= u'a' && lower <= u'z') || code == u'-' ||
               code == u'_' || code == u'.';
    });
}

PreferenceLine readPreferenceLine(const QByteArray &line)
{
    using Kind = PreferenceLine::Kind;
    const QByteArray text = withoutBlanks(line);
    if (text.isEmpty() || text.startsWith('#'))
        return {Kind::Blank, {}, {}};
    const qsizetype sign = text.indexOf('=');
    const QString key = sign < 0 ? QString() : QString::fromLatin1(withoutBlanks(text.left(sign)));
    if (!isPreferenceKey(key))
        return {};
    const QByteArray valueText = withoutBlanks(text.mid(sign + 1));
    if (valueText == "null")
        return {Kind::Removal, key, {}};
    if (const auto value = readValue(valueText))
        return {Kind::Value, key, *value};
    return {};
}

QByteArray writePreferenceLine(const QString &key, const std::optional<PreferenceValue> &value)
{
    return key.toLatin1() + " = " + written(value);
}
