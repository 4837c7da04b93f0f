#include "normalizeStudyAnswer.h"
#include "suite.h"

#include <QRandomGenerator>
#include <QRegularExpression>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

// Alphabets of random texts. Capital sigma is in none but its own test: what it becomes depends on where it
// stands.
constexpr auto latin = u"aAbBzZéÉñÑöÖåÅiIİẤấĐđƠờ";
constexpr auto cyrillic = u"аАёЁйЙыЫщЩїЇґҐ";
constexpr auto otherScripts = u"αΑάΆωΏאב漢字ひらカギｶﾞ한국각ᄒ\u1161\u11AB";
constexpr auto marks = u"\u0301\u0308\u0306\u0323\u05B4\u064B\u20E3\uFE0F\u0E34\u093F";
constexpr auto digitsAndWidths = u"0129２Ａｂ！；（＋²½";
constexpr auto punctuation = u".;:!?,|_<>≠";
constexpr auto operators = u"+-*/=^()";
constexpr auto whiteSpace = u" \t\n\v\f\r\u0085\u00A0\u1680\u2003\u2028\u2029\u202F\u3000";
constexpr auto outsideTheFirstPlane = u"😀👩🏽\u200D💻𝒳𐐀𐐨";

QString oneOf(const char16_t *alphabet, QRandomGenerator &random)
{
    const auto characters = QString::fromUtf16(alphabet).toUcs4();
    const auto character = char32_t(characters[random.bounded(int(characters.size()))]);
    return QString::fromUcs4(&character, 1);
}

QString randomText(QRandomGenerator &random)
{
    const std::array alphabets{latin,           cyrillic,    otherScripts, marks,      operators,
                               digitsAndWidths, punctuation, whiteSpace,   whiteSpace, outsideTheFirstPlane};
    QString text;
    for (int left = random.bounded(24); left > 0; --left)
        text += oneOf(alphabets[std::size_t(random.bounded(int(alphabets.size())))], random);
    return text;
}

constexpr int manyTexts = 4000;

void forRandomTexts(const std::function<void(const QString &, QRandomGenerator &)> &check)
{
    QRandomGenerator random(20261121);
    for (int count = 0; count < manyTexts && !QTest::currentTestFailed(); ++count)
        check(randomText(random), random);
}

/// The ordinary width of what has another, and no marks: by Qt's own tables and a whole decomposition.
QString foldedByQt(const QString &text)
{
    QString ordinary;
    for (const auto character : text.toUcs4()) {
        const auto tag = QChar::decompositionTag(character);
        const bool hasOtherWidth = tag == QChar::Wide || tag == QChar::Narrow;
        const auto one = char32_t(character);
        ordinary += hasOtherWidth ? QChar::decomposition(character) : QString::fromUcs4(&one, 1);
    }
    QString plain;
    for (const auto character : ordinary.normalized(QString::NormalizationForm_D).toUcs4()) {
        const auto one = char32_t(character);
        if (!QChar::isMark(one))
            plain += QString::fromUcs4(&one, 1);
    }
    return plain.normalized(QString::NormalizationForm_C);
}

/// The same seven steps one after the other, without ICU. Takes no lone surrogates and no capital sigma.
QString normalizedStepByStep(const QString &text)
{
    static const QRegularExpression spacedOperator(uR"(\s*([+\-*/=^()])\s*)"_s,
                                                   QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression closing(u"[.;:!?]+$"_s);
    auto form = text.toLower();
    form.replace(u'ё', u'е');
    form = foldedByQt(form).trimmed().simplified();
    form.replace(spacedOperator, u"\\1"_s);
    form.remove(closing);
    return form;
}

/// A lower-case letter whose capital has another lower-case letter, or several. Unicode itself keeps these
/// apart: ß and SS, ς and σ, ſ and s, ı and i, ﬁ and FI, the iota that stands below a letter or after it.
bool comesBackOtherwiseFromUpperCase(char32_t letter)
{
    const auto hasIotaBelow = (letter >= 0x1F80 && letter <= 0x1FAF) ||
                              u"\u0345ᾲᾳᾴᾷᾼῂῃῄῇῌῲῳῴῷῼ"_s.contains(QChar(char16_t(letter)));
    const auto isLigature = (letter >= 0xFB00 && letter <= 0xFB06) || (letter >= 0xFB13 && letter <= 0xFB17);
    const auto isOldCyrillicForm = letter >= 0x1C80 && letter <= 0x1C88;
    return letter < 0x10000 && (hasIotaBelow || isLigature || isOldCyrillicForm ||
                                u"µßıŉſςϐϑϕϖϰϱϵևẚẛ"_s.contains(QChar(char16_t(letter))));
}

/// Whether a character is one of many thousands that no step touches, so that a few stand for all.
bool isOneOfManyAlike(char32_t character)
{
    return QChar::script(character) == QChar::Script_Tangut || QChar::script(character) == QChar::Script_Yi ||
           (character >= 0x3400 && character < 0x9F00) || (character > 0xAC00 + 600 && character <= 0xD7A3) ||
           QChar::category(character) == QChar::Other_PrivateUse ||
           QChar::category(character) == QChar::Other_NotAssigned;
}

/// The characters of the first two planes between letters, so that none is at an end or joins a neighbour.
void forEveryCharacter(const std::function<void(char32_t, const QString &)> &check)
{
    for (char32_t character = 0; character < 0x20000 && !QTest::currentTestFailed(); ++character) {
        if (!QChar::isSurrogate(character) && !isOneOfManyAlike(character))
            check(character, u'x' + QString::fromUcs4(&character, 1) + u'x');
    }
}

} // namespace

class TestNormalizeStudyAnswer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneFormForAll_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("form");
        const auto row = [](const char *name, const QString &text, const QString &form) {
            QTest::newRow(name) << text << form;
        };
        row("empty", u""_s, u""_s);
        row("lower case", u"Derivative"_s, u"derivative"_s);
        row("ends and full stop", u" slope. "_s, u"slope"_s);
        row("run of punctuation", u"SLOPE!!"_s, u"slope"_s);
        row("every closing mark", u"a.;:!?"_s, u"a"_s);
        row("punctuation inside", u"a.b;c"_s, u"a.b;c"_s);
        row("comma is no closing mark", u"a,"_s, u"a,"_s);
        row("only spaces", u" \t "_s, u""_s);
        row("only punctuation", u".;:!?"_s, u""_s);
        row("runs of white space", u"a \t\n b"_s, u"a b"_s);
        row("carriage return and line feed", u"a\r\nb"_s, u"a b"_s);
        row("spaces of Unicode", u"\u3000a\u00A0\u2028\u2003b\u0085"_s, u"a b"_s);
        row("zero-width space is none", u"a\u200Bb"_s, u"a\u200Bb"_s);
        row("space around each operator", u"a + b - c * d / e = f ^ g ( h ) i"_s, u"a+b-c*d/e=f^g(h)i"_s);
        row("space between operators", u"( ( a ) )"_s, u"((a))"_s);
        row("power", u"x ^ 2+1"_s, u"x^2+1"_s);
        row("product stays apart", u"2 x + 1"_s, u"2 x+1"_s);
        row("function", u"f ( x )"_s, u"f(x)"_s);
        row("operator and closing mark", u"a + ."_s, u"a+"_s);

        row("acute", u"É"_s, u"e"_s);
        row("yo", u"Ёж ёж"_s, u"еж еж"_s);
        row("yo from parts", u"Е\u0308ж"_s, u"еж"_s);
        row("short i", u"Йогурт"_s, u"иогурт"_s);
        row("Ukrainian", u"Її Ґ"_s, u"іі ґ"_s);
        row("Vietnamese", u"Tiếng Việt"_s, u"tieng viet"_s);
        row("Vietnamese from parts", u"Tie\u0302\u0301ng Vie\u0323\u0302t"_s, u"tieng viet"_s);
        row("d with stroke has no parts", u"Đường"_s, u"đuong"_s);
        row("o with stroke has no parts", u"Øre"_s, u"øre"_s);
        row("sharp s", u"STRASSE straße ẞ"_s, u"strasse straße ß"_s);
        row("Turkish", u"İstanbul DIŞ dış"_s, u"istanbul dis dıs"_s);
        row("final sigma", u"ΟΔΥΣΣΕΎΣ"_s, u"οδυσσευς"_s);
        row("final sigma before a space", u"ΟΔΟΣ Α"_s, u"οδος α"_s);
        row("final sigma before a full stop", u"ΟΔΟΣ."_s, u"οδος"_s);
        row("final sigma before a mark that is folded later", u"ΑΣ\u0903Α"_s, u"αςα"_s);
        row("sigma alone", u"Σ"_s, u"σ"_s);
        row("small sigma keeps its form", u"οδοσ οδος"_s, u"οδοσ οδος"_s);
        row("iota below is a mark", u"ᾳ"_s, u"α"_s);
        row("Hebrew points", u"שָׁלוֹם"_s, u"שלום"_s);
        row("Arabic points", u"مُحَمَّد"_s, u"محمد"_s);
        row("Devanagari vowel signs", u"हिन्दी"_s, u"हनद"_s);
        row("Thai", u"กำ กิน"_s, u"กำ กน"_s);
        row("unequal sign loses its stroke", u"a ≠ b"_s, u"a=b"_s);
        row("Greek question mark is a semicolon", u"α\u037E"_s, u"α"_s);
        row("mark on a space", u" \u0301a"_s, u"a"_s);
        row("only marks", u"\u0301\u20DD\u0903"_s, u""_s);

        row("full width", u"ＡＢＣ　１２３＋４＝（ｘ）！"_s, u"abc 123+4=(x)"_s);
        row("half-width katakana", u"ｶﾀｶﾅ"_s, u"カタカナ"_s);
        row("half-width katakana with voice marks", u"ｶﾞﾊﾟ"_s, u"カハ"_s);
        row("katakana with voice marks", u"ガパ"_s, u"カハ"_s);
        row("half-width Hangul letter", u"ﾡ"_s, u"ㄱ"_s);
        row("full-width signs", u"￡￦"_s, u"£₩"_s);
        row("superscript is no digit", u"x²"_s, u"x²"_s);
        row("ligature stays", u"ﬁ"_s, u"ﬁ"_s);
        row("fraction stays", u"½"_s, u"½"_s);
        row("mathematical letter stays", u"𝒳"_s, u"𝒳"_s);
        row("circled digit stays", u"①"_s, u"①"_s);
        row("compatibility ideograph with a canonical form", u"\uF900"_s, u"\u8C48"_s);

        row("Hangul syllables", u"한국"_s, u"한국"_s);
        row("Hangul letters", u"\u1112\u1161\u11AB\u1100\u116E\u11A8"_s, u"한국"_s);
        row("Hangul syllable and letter", u"하\u11AB"_s, u"한"_s);
        row("Hangul letters with a tone mark", u"\u1112\u302E\u1161"_s, u"하"_s);

        row("family", u"👩\u200D👩\u200D👧"_s, u"👩\u200D👩\u200D👧"_s);
        row("skin tone stays", u"👍🏽"_s, u"👍🏽"_s);
        row("variation selector goes", u"❤\uFE0F"_s, u"❤"_s);
        row("keycap", u"1\uFE0F\u20E3"_s, u"1"_s);
        row("flag", u"🇻🇳"_s, u"🇻🇳"_s);
        row("bidi marks stay", u"\u200Fא\u200E"_s, u"\u200Fא\u200E"_s);
        row("byte-order mark stays", u"\uFEFFa"_s, u"\uFEFFa"_s);
        row("NUL", u"A\0B "_s, u"a\0b"_s);
        row("capitals outside the first plane", u"𐐀"_s, u"𐐨"_s);
        row("marks outside the first plane", u"a\U0001D165"_s, u"a"_s);
    }
    void oneFormForAll()
    {
        QFETCH(QString, text);
        QTEST(normalizeStudyAnswer(text), "form");
    }

    /// White space is settled before the closing punctuation goes.
    void aSpaceBeforeTheClosingPunctuationStays()
    {
        QCOMPARE(normalizeStudyAnswer(u"slope ."_s), u"slope "_s);
        QCOMPARE(normalizeStudyAnswer(u"? !"_s), u"? "_s);
    }

    void loneSurrogatesStayAndChangeNothingElse_data()
    {
        QTest::addColumn<QString>("surrogate");
        QTest::newRow("high") << QString(QChar(0xD83D));
        QTest::newRow("low") << QString(QChar(0xDE00));
        QTest::newRow("low before high") << QString(QChar(0xDE00)) + QChar(0xD83D);
        QTest::newRow("two high") << QString(2, QChar(0xD835));
    }
    void loneSurrogatesStayAndChangeNothingElse()
    {
        QFETCH(QString, surrogate);
        QCOMPARE(normalizeStudyAnswer(surrogate), surrogate);
        QCOMPARE(normalizeStudyAnswer(u" É  + "_s + surrogate + u"  Ё!"_s), u"e+"_s + surrogate + u" е"_s);
        QCOMPARE(normalizeStudyAnswer(u"ＡΣ"_s + surrogate + u"."_s), u"aς"_s + surrogate);
    }

    void theLocaleTakesNoPart()
    {
        QLocale::setDefault(QLocale(QLocale::Turkish, QLocale::Turkey));
        const auto turkish = normalizeStudyAnswer(u"TITLE"_s);
        QLocale::setDefault(QLocale::c());
        QCOMPARE(turkish, u"title"_s);
    }

    void aLongTextIsNormalizedAsItsPartsAre()
    {
        const auto part = u"ＡΣ ё\u0301 +  ｶﾞ\u1112\u1161 Й  "_s;
        const auto form = normalizeStudyAnswer(part);
        constexpr int times = 20'000;
        QStringList forms(times, form);
        QCOMPARE(normalizeStudyAnswer(part.repeated(times)), forms.join(u' '));
    }

    void everyStepGivesWhatQtGivesForIt()
    {
        forRandomTexts([](const QString &text, QRandomGenerator &) {
            QCOMPARE(normalizeStudyAnswer(text), normalizedStepByStep(text));
        });
    }

    /// Only a space that the last step has laid open is left to trim.
    void aFormIsItsOwnFormUnlessItEndsWithASpace()
    {
        int endingWithASpace = 0;
        forRandomTexts([&](const QString &text, QRandomGenerator &) {
            const auto form = normalizeStudyAnswer(text);
            endingWithASpace += form.endsWith(u' ');
            QCOMPARE(normalizeStudyAnswer(form) == form, !form.endsWith(u' '));
        });
        QVERIFY(endingWithASpace > 0);
        forEveryCharacter([](char32_t, const QString &text) {
            const auto form = normalizeStudyAnswer(text);
            QCOMPARE(normalizeStudyAnswer(form), form);
        });
    }

    void upperCaseMakesNoDifference()
    {
        forRandomTexts([](const QString &text, QRandomGenerator &) {
            QCOMPARE(normalizeStudyAnswer(text.toUpper()), normalizeStudyAnswer(text));
        });
        forEveryCharacter([](char32_t character, const QString &text) {
            const bool same = normalizeStudyAnswer(text.toUpper()) == normalizeStudyAnswer(text);
            QVERIFY2(same != comesBackOtherwiseFromUpperCase(character),
                     qPrintable(u"U+%1"_s.arg(quint32(character), 4, 16)));
        });
    }

    void lowerCaseMakesNoDifference()
    {
        forEveryCharacter([](char32_t, const QString &text) {
            QCOMPARE(normalizeStudyAnswer(text.toLower()), normalizeStudyAnswer(text));
        });
    }

    void oneWhiteSpaceIsAsGoodAsAnother()
    {
        forRandomTexts([](const QString &text, QRandomGenerator &random) {
            QString other;
            for (const auto unit : text)
                other += unit.isSpace() ? oneOf(whiteSpace, random) + oneOf(whiteSpace, random) : unit;
            QCOMPARE(normalizeStudyAnswer(other), normalizeStudyAnswer(text));
        });
    }

    void composedOrNotMakesNoDifference()
    {
        forRandomTexts([](const QString &text, QRandomGenerator &) {
            const auto form = normalizeStudyAnswer(text);
            QCOMPARE(normalizeStudyAnswer(text.normalized(QString::NormalizationForm_C)), form);
            QCOMPARE(normalizeStudyAnswer(text.normalized(QString::NormalizationForm_D)), form);
        });
    }
};

QUORVEL_TEST(TestNormalizeStudyAnswer)
#include "tst_normalizeStudyAnswer.moc"
