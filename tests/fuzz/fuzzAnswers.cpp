// Two texts of any UTF-16 units: what a card expects, and what was typed. The first two bytes of an input say
// how many units the first text has; the rest are the units, low byte first.
#include "answerMatching.h"
#include "normalizeStudyAnswer.h"
#include "require.h"

#include <algorithm>
#include <cstdint>

namespace {

QString textFrom(const std::uint8_t *bytes, std::size_t units)
{
    QString text(qsizetype(units), Qt::Uninitialized);
    for (std::size_t unit = 0; unit < units; ++unit)
        text[qsizetype(unit)] = QChar(char16_t(bytes[2 * unit] | (bytes[2 * unit + 1] << 8)));
    return text;
}

/// A surrogate without its other half may meet one when the mark between them goes; the pair that they make
/// is a new character, which a second pass takes for what it is.
bool hasLoneSurrogate(const QString &text)
{
    for (qsizetype place = 0; place < text.size(); ++place) {
        if (!text[place].isSurrogate())
            continue;
        const bool isPair =
            text[place].isHighSurrogate() && place + 1 < text.size() && text[place + 1].isLowSurrogate();
        if (!isPair)
            return true;
        ++place;
    }
    return false;
}

bool isOperator(QChar unit)
{
    return QStringView(u"+-*/=^()").contains(unit);
}

/// By Qt's tables, which are not those of the folding.
bool isFoldedAway(char32_t character)
{
    const auto tag = QChar::decompositionTag(character);
    return QChar::isMark(character) || tag == QChar::Wide || tag == QChar::Narrow;
}

void checkSpaces(const QString &form)
{
    for (qsizetype place = 0; place < form.size(); ++place) {
        if (!form[place].isSpace())
            continue;
        require(form[place] == u' ', "every white space is an ordinary one");
        require(place > 0, "no space is in front");
        require(!form[place - 1].isSpace() && !isOperator(form[place - 1]), "one space, after no operator");
        require(place + 1 == form.size() || !isOperator(form[place + 1]), "no space is before an operator");
    }
}

void checkForm(const QString &text, const QString &form)
{
    checkSpaces(form);
    require(form.isEmpty() || !QStringView(u".;:!?").contains(form.back()), "no closing mark is at the end");
    // The longest full lower case has three units for one, and no later step makes more.
    require(form.size() <= 3 * text.size(), "a form is not much longer than its text");
    if (hasLoneSurrogate(text))
        return;
    require(!hasLoneSurrogate(form), "no pair is torn");
    const auto characters = form.toUcs4();
    require(std::none_of(characters.begin(), characters.end(), isFoldedAway), "no mark and no width is left");
    require((normalizeStudyAnswer(form) == form) == !form.endsWith(u' '),
            "a form is its own form unless the punctuation has left a space");
}

void checkAnswer(const QString &expected, const QString &answer)
{
    const auto accepted = acceptedAnswers(expected);
    require(std::none_of(accepted.begin(), accepted.end(), [](const auto &form) { return form.isEmpty(); }),
            "no empty form is accepted");
    const auto form = normalizeStudyAnswer(answer);
    const bool right = acceptsAnswer(expected, accepted, answer);
    require(!right || !form.isEmpty(), "an empty answer is never right");
    require(right || !accepted.contains(form), "an accepted form is right");
    // One of them, by the answer's length: all would take the square of the time.
    const auto alternatives = expected.split(u'|');
    const auto &one = alternatives[answer.size() % alternatives.size()];
    require(acceptsAnswer(expected, accepted, one) == !normalizeStudyAnswer(one).isEmpty(),
            "an alternative is right unless its form is empty");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t units = (size - 2) / 2;
    const std::size_t first = std::min<std::size_t>(data[0] | (data[1] << 8), units);
    const auto expected = textFrom(data + 2, first);
    const auto answer = textFrom(data + 2 + 2 * first, units - first);

    checkForm(expected, normalizeStudyAnswer(expected));
    checkForm(answer, normalizeStudyAnswer(answer));
    checkAnswer(expected, answer);
    return 0;
}
