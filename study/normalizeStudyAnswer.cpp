#include "normalizeStudyAnswer.h"

#include <QChar>
#include <QStringView>

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

// Texts are UTF-16 that may hold lone surrogates: ICU passes them through as characters without properties.

namespace {

/// ICU fails where its data are missing or memory has come to an end. There is no normalized form to go on
/// with then.
void requireSuccess(UErrorCode status, const char *what)
{
    if (U_FAILURE(status))
        qFatal("%s: %s", what, u_errorName(status));
}

const UNormalizer2 *canonicalForms()
{
    UErrorCode status = U_ZERO_ERROR;
    const auto *forms = unorm2_getNFCInstance(&status);
    requireSuccess(status, "canonical forms");
    return forms;
}

const UNormalizer2 *compatibilityForms()
{
    UErrorCode status = U_ZERO_ERROR;
    const auto *forms = unorm2_getNFKCInstance(&status);
    requireSuccess(status, "compatibility forms");
    return forms;
}

/// The number of units as ICU counts them.
int32_t unitsIn(QStringView text)
{
    if (text.size() > std::numeric_limits<int32_t>::max())
        qFatal("A text of %lld units is longer than ICU can count", static_cast<long long>(text.size()));
    return int32_t(text.size());
}

/// The full mapping of the root locale: Σ gives ς at the end of a word, İ gives i and a dot above.
std::u16string lowerCased(QStringView text)
{
    std::u16string lower(std::size_t(unitsIn(text)), u'\0');
    while (true) {
        UErrorCode status = U_ZERO_ERROR;
        const auto needed =
            u_strToLower(lower.data(), unitsIn(lower), text.utf16(), unitsIn(text), "", &status);
        lower.resize(std::size_t(needed));
        if (status == U_BUFFER_OVERFLOW_ERROR)
            continue;
        requireSuccess(status, "lower case");
        return lower;
    }
}

/// A full-width or half-width character in its ordinary width. Only these compatibility mappings are meant:
/// ² is not 2.
UChar32 ordinaryWidth(UChar32 character)
{
    constexpr UChar32 firstOfOtherWidth = 0x3000;
    if (character < firstOfOtherWidth)
        return character;
    const auto type = u_getIntPropertyValue(character, UCHAR_DECOMPOSITION_TYPE);
    if (type != U_DT_WIDE && type != U_DT_NARROW)
        return character;
    char16_t mapped[2];
    UErrorCode status = U_ZERO_ERROR;
    const auto length = unorm2_getRawDecomposition(compatibilityForms(), character, mapped, 2, &status);
    requireSuccess(status, "ordinary width");
    return length == 1 ? mapped[0] : character;
}

/// Every combining mark, with or without a width of its own: scripts have vowel signs of both sorts, and some
/// signs of the one sort decompose into the other. The enclosing ones (the box of a keycap emoji) and the
/// variation selectors go with them, so ❤ is the same in colour. A zero-width joiner, a bidi mark and a skin
/// tone are no marks and stay.
bool isMark(UChar32 character)
{
    return (U_GET_GC_MASK(character) & U_GC_M_MASK) != 0;
}

bool isHangulSyllable(UChar32 character)
{
    return character >= 0xAC00 && character <= 0xD7A3;
}

bool isHangulLetter(UChar32 character)
{
    return character >= 0x1100 && character <= 0x11FF;
}

void append(std::u16string &text, UChar32 character)
{
    if (U_IS_BMP(character)) {
        text.push_back(char16_t(character));
        return;
    }
    text.push_back(U16_LEAD(character));
    text.push_back(U16_TRAIL(character));
}

/// What is left of a character without its marks and its width.
void appendFolded(std::u16string &text, UChar32 character)
{
    character = ordinaryWidth(character);
    constexpr int longestDecomposition = 16; // canonical ones have at most 4 characters
    char16_t parts[longestDecomposition];
    UErrorCode status = U_ZERO_ERROR;
    const auto length =
        isHangulSyllable(character)
            ? -1
            : unorm2_getDecomposition(canonicalForms(), character, parts, longestDecomposition, &status);
    requireSuccess(status, "decomposition");
    if (length < 0) {
        if (!isMark(character))
            append(text, character);
        return;
    }
    for (int32_t place = 0; place < length;) {
        UChar32 part = 0;
        U16_NEXT(parts, place, length, part);
        if (!isMark(part))
            append(text, part);
    }
}

/// Puts Hangul letters together to syllables. Without marks nothing else can be put together.
std::u16string composed(const std::u16string &text)
{
    std::u16string whole(text.size(), u'\0'); // it only gets shorter
    UErrorCode status = U_ZERO_ERROR;
    const auto length =
        unorm2_normalize(canonicalForms(), text.data(), unitsIn(text), whole.data(), unitsIn(whole), &status);
    requireSuccess(status, "composition");
    whole.resize(length);
    return whole;
}

/// Without diacritics and width. Marks are dropped one by one, so their canonical order does not matter.
std::u16string folded(std::u16string_view text)
{
    constexpr UChar32 smallYo = 0x0451;
    constexpr UChar32 smallIe = 0x0435;
    std::u16string plain;
    plain.reserve(text.size());
    bool hasHangulLetters = false;
    for (std::size_t place = 0; place < text.size();) {
        UChar32 character = 0;
        U16_NEXT(text.data(), place, text.size(), character);
        if (character < 0x80)
            plain.push_back(char16_t(character));
        else
            appendFolded(plain, character == smallYo ? smallIe : character);
        hasHangulLetters = hasHangulLetters || isHangulLetter(character);
    }
    return hasHangulLetters ? composed(plain) : plain;
}

bool isOperator(char16_t unit)
{
    return std::u16string_view(u"+-*/=^()").find(unit) != std::u16string_view::npos;
}

bool isClosingPunctuation(char16_t unit)
{
    return std::u16string_view(u".;:!?").find(unit) != std::u16string_view::npos;
}

/// Without white space at the ends and around operators, and with one space for any other run of it.
std::u16string withSingleSpaces(std::u16string_view text)
{
    std::u16string tidy;
    tidy.reserve(text.size());
    bool spaceBefore = false;
    for (const auto unit : text) {
        if (QChar::isSpace(unit)) {
            spaceBefore = true;
            continue;
        }
        if (spaceBefore && !tidy.empty() && !isOperator(unit) && !isOperator(tidy.back()))
            tidy.push_back(u' ');
        spaceBefore = false;
        tidy.push_back(unit);
    }
    return tidy;
}

} // namespace

QString normalizeStudyAnswer(const QString &text)
{
    if (text.isEmpty())
        return {};
    auto form = withSingleSpaces(folded(lowerCased(text)));
    // A space before the punctuation stays: the white space was settled first.
    const auto last = std::find_if_not(form.rbegin(), form.rend(), isClosingPunctuation);
    form.erase(last.base(), form.end());
    return QStringView(form).toString();
}
