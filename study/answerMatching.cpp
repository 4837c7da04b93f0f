#include "answerMatching.h"

#include "normalizeStudyAnswer.h"

#include <QStringView>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

constexpr double tolerance = 1e-6;

qsizetype digitsAt(QStringView text, qsizetype start)
{
    qsizetype end = start;
    while (end < text.size() && text[end] >= u'0' && text[end] <= u'9')
        ++end;
    return end - start;
}

qsizetype signAt(QStringView text, qsizetype start)
{
    return start < text.size() && (text[start] == u'+' || text[start] == u'-') ? 1 : 0;
}

/// Whether all of the text is a decimal number of the C locale: "-1", ".5", "5." or "1e+3", but not "nan",
/// "inf" or "0x10".
bool isDecimalNumber(QStringView text)
{
    auto place = signAt(text, 0);
    const auto whole = digitsAt(text, place);
    place += whole;
    qsizetype fraction = 0;
    if (place < text.size() && text[place] == u'.') {
        fraction = digitsAt(text, place + 1);
        place += 1 + fraction;
    }
    if (whole + fraction == 0)
        return false;
    if (place < text.size() && (text[place] == u'e' || text[place] == u'E')) {
        place += 1 + signAt(text, place + 1);
        const auto exponent = digitsAt(text, place);
        if (exponent == 0)
            return false;
        place += exponent;
    }
    return place == text.size();
}

/// The number that a text stands for, with spaces as separators of digits and a comma as the decimal point.
/// One too large for a double is infinite, which is near to no number, itself included; one too small is 0.
std::optional<double> numberIn(QStringView raw)
{
    auto text = raw.trimmed().toString();
    text.remove(u' ').replace(u',', u'.');
    return isDecimalNumber(text) ? std::optional(text.toDouble()) : std::nullopt;
}

} // namespace

QStringList acceptedAnswers(const QString &expectedAnswer)
{
    QStringList accepted;
    for (const auto &alternative : expectedAnswer.split(u'|')) {
        const auto form = normalizeStudyAnswer(alternative);
        if (!form.isEmpty())
            accepted.append(form);
    }
    return accepted;
}

bool acceptsAnswer(const QString &expectedAnswer, const QStringList &accepted, const QString &answer)
{
    const auto form = normalizeStudyAnswer(answer);
    if (form.isEmpty())
        return false;
    if (accepted.contains(form))
        return true;
    const auto number = numberIn(answer);
    if (!number)
        return false;
    const auto alternatives = QStringView(expectedAnswer).split(u'|');
    return std::any_of(alternatives.begin(), alternatives.end(), [&](QStringView alternative) {
        const auto expected = numberIn(alternative);
        return expected && std::abs(*number - *expected) < tolerance;
    });
}
