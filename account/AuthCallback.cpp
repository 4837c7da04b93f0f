// QUrl is not used for reading: it writes hosts in lower case and mends what is broken, and here a host is
// compared as it came.
#include "AuthCallback.h"

#include "controlCharacters.h"
#include "decodedUtf8.h"

#include <QByteArray>

#include <algorithm>
#include <cctype>

using namespace Qt::StringLiterals;

namespace {

bool isAsciiLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

bool isAsciiDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// The part of `text` in front of the first `mark`, all of it where there is none.
QStringView upTo(QStringView text, QChar mark)
{
    const auto place = text.indexOf(mark);
    return place < 0 ? text : text.first(place);
}

/// What follows the scheme and its colon; none where the text does not begin with a scheme.
std::optional<QStringView> behindScheme(QStringView url)
{
    const auto scheme = upTo(url, u':');
    if (scheme.size() == url.size() || scheme.isEmpty() || !isAsciiLetter(scheme.front()))
        return std::nullopt;
    const bool isScheme = std::all_of(scheme.begin(), scheme.end(), [](QChar character) {
        return isAsciiLetter(character) || isAsciiDigit(character) || character == u'+' ||
               character == u'-' || character == u'.';
    });
    return isScheme ? std::optional(url.sliced(scheme.size() + 1)) : std::nullopt;
}

/// The host in what stands between the scheme and the query: without user and port, undecoded. None where
/// there is no authority or its port is no number.
std::optional<QStringView> hostIn(QStringView hierarchy)
{
    if (!hierarchy.startsWith("//"_L1))
        return std::nullopt;
    auto authority = upTo(hierarchy.sliced(2), u'/');
    // A second at-sign stays in the host, which is then another one.
    authority = authority.sliced(authority.indexOf(u'@') + 1);
    const auto host = upTo(authority, u':');
    const auto port = authority.sliced(std::min(host.size() + 1, authority.size()));
    return std::all_of(port.begin(), port.end(), isAsciiDigit) ? std::optional(host) : std::nullopt;
}

/// A value without its percent signs; none where that leaves no text.
std::optional<QString> decodedValue(QStringView value)
{
    if (!value.isValidUtf16())
        return std::nullopt;
    const auto encoded = value.toUtf8();
    QByteArray bytes;
    bytes.reserve(encoded.size());
    for (qsizetype place = 0; place < encoded.size(); ++place) {
        if (encoded[place] != '%') {
            bytes.append(encoded[place]);
            continue;
        }
        const auto digits = encoded.mid(place + 1, 2);
        const bool areDigits =
            digits.size() == 2 && std::all_of(digits.begin(), digits.end(), [](char digit) {
                return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
            });
        if (!areDigits)
            return std::nullopt;
        bytes.append(QByteArray::fromHex(digits));
        place += 2;
    }
    auto text = decodedUtf8(bytes);
    return text && !hasControlCharacters(*text) ? text : std::nullopt;
}

/// The value of the first item of that name; none where that item has no "=".
std::optional<QString> itemOf(QStringView query, QStringView name)
{
    for (const auto item : query.tokenize(u'&')) {
        const auto ownName = upTo(item, u'=');
        if (ownName != name)
            continue;
        return ownName.size() < item.size() ? decodedValue(item.sliced(ownName.size() + 1)) : std::nullopt;
    }
    return std::nullopt;
}

/// The character at a place of a text, also one of two units.
char32_t characterAt(QStringView text, qsizetype place)
{
    const bool isPair =
        text[place].isHighSurrogate() && place + 1 < text.size() && text[place + 1].isLowSurrogate();
    return isPair ? QChar::surrogateToUcs4(text[place], text[place + 1]) : text[place].unicode();
}

} // namespace

std::optional<AuthCallback> readAuthCallback(const QString &url)
{
    if (url.size() > longestAuthCallback)
        return std::nullopt;
    const auto rest = behindScheme(url);
    if (!rest)
        return std::nullopt;
    const auto address = upTo(*rest, u'#');
    const auto hierarchy = upTo(address, u'?');
    if (hierarchy.size() == address.size() || hostIn(hierarchy) != u"auth")
        return std::nullopt;
    const auto query = address.sliced(hierarchy.size() + 1);

    AuthCallback callback;
    callback.session = itemOf(query, u"session").value_or(QString());
    if (callback.session.isEmpty())
        return std::nullopt;
    callback.email = itemOf(query, u"email");
    if (callback.email && callback.email->isEmpty())
        callback.email = std::nullopt;
    callback.provider = itemOf(query, u"provider");
    return callback;
}

QString providerName(const AuthCallback &callback)
{
    const auto name = callback.provider.value_or(QString()).toLower();
    if (name.trimmed().isEmpty())
        return u"OAuth"_s;
    QString capitalized;
    bool awaitsLetter = true;
    for (qsizetype place = 0; place < name.size();) {
        auto character = characterAt(name, place);
        place += QChar::requiresSurrogates(character) ? 2 : 1;
        if (QChar::isSpace(character)) {
            awaitsLetter = true;
        } else if (awaitsLetter && QChar::isLetter(character)) {
            awaitsLetter = false;
            character = QChar::toTitleCase(character);
        }
        capitalized += QStringView(QChar::fromUcs4(character));
    }
    return capitalized;
}
