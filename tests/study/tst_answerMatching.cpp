#include "StudyCard.h"
#include "answerMatching.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

bool accepts(const QString &expectedAnswer, const QString &answer)
{
    StudyCard card;
    card.expectedAnswer = expectedAnswer;
    return card.accepts(answer);
}

} // namespace

class TestAnswerMatching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alternativesAreNormalizedInOrderWithoutEmptyOnes()
    {
        QCOMPARE(acceptedAnswers(u" Slope.| |Derivative|!?|slope"_s),
                 QStringList({u"slope"_s, u"derivative"_s, u"slope"_s}));
        QCOMPARE(acceptedAnswers(u"|"_s), QStringList());
        QCOMPARE(acceptedAnswers(QString()), QStringList());
        StudyCard card;
        card.expectedAnswer = u"Ёж|x ^ 2"_s;
        QCOMPARE(card.acceptedAnswers(), QStringList({u"еж"_s, u"x^2"_s}));
    }

    void answersAsText_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("accepted");
        const auto row = [](const QString &expected, const QString &answer, bool accepted) {
            QTest::addRow("'%s' for '%s'", qUtf8Printable(answer), qUtf8Printable(expected))
                << expected << answer << accepted;
        };
        row(u"derivative|slope"_s, u"Derivative"_s, true);
        row(u"derivative|slope"_s, u" slope. "_s, true);
        row(u"derivative|slope"_s, u"SLOPE!!"_s, true);
        row(u"derivative|slope"_s, u"slopes"_s, false);
        row(u"derivative|slope"_s, u"derivative|slope"_s, false);
        row(u"ёж"_s, u"еж"_s, true);
        row(u"йогурт"_s, u"иогурт"_s, true);
        row(u"x^2 + 1"_s, u"x ^ 2+1"_s, true);
        row(u"x^2 + 1"_s, u"x^2 + 1 = 0"_s, false);
        row(u"|"_s, u"|"_s, false);
        row(u"|"_s, u""_s, false);
        row(u"|"_s, u"0"_s, false);
        row(u""_s, u""_s, false);
        row(u". | ;"_s, u"."_s, false);
        row(u"a"_s, u"   "_s, false);
        row(u" "_s, u" \t "_s, false);
        row(u".;:!?"_s, u".;:!?"_s, false);
        row(u"\u0301"_s, u"\u0301"_s, false);
        row(u"ΟΔΟΣ"_s, u"οδος"_s, true);
        row(u"한국"_s, u"\u1112\u1161\u11AB\u1100\u116E\u11A8"_s, true);
        row(u"２"_s, u"2"_s, true);
    }
    void answersAsText()
    {
        QFETCH(QString, expected);
        QFETCH(QString, answer);
        QTEST(accepts(expected, answer), "accepted");
    }

    void answersAsNumbers_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("accepted");
        const auto row = [](const QString &expected, const QString &answer, bool accepted) {
            QTest::addRow("'%s' for '%s'", qUtf8Printable(answer), qUtf8Printable(expected))
                << expected << answer << accepted;
        };
        row(u"3.14"_s, u"3,14"_s, true);
        row(u"3.14"_s, u" 3.14 "_s, true);
        row(u"3.14"_s, u"3.1400001"_s, true);
        row(u"3.14"_s, u"3.141"_s, false);
        row(u"3.5"_s, u"3,5"_s, true);
        row(u"1000"_s, u"1 000"_s, true);
        row(u"1 000 000,5"_s, u"1000000.50"_s, true);
        row(u"0.3"_s, u"0.30000001"_s, true);
        row(u"3"_s, u"three"_s, false);
        row(u"three|3|drei"_s, u"3.0"_s, true);
        row(u"1|2"_s, u"2,0"_s, true);
        // strictly less than 1e-6; both of these are exact in binary or safely beside it
        row(u"0"_s, u"0.000001"_s, false);
        row(u"0"_s, u"0.00000099"_s, true);
        row(u"0"_s, u"-0.00000099"_s, true);
        row(u"0"_s, u"-0.000001"_s, false);
        // the sign, the point and the exponent of the C locale
        row(u"5"_s, u"+5"_s, true);
        row(u"-5"_s, u"- 5,0"_s, true);
        row(u"5"_s, u"5."_s, true);
        row(u"0.5"_s, u".5"_s, true);
        row(u"-0.5"_s, u"-.5"_s, true);
        row(u"0"_s, u"-0"_s, true);
        row(u"1500"_s, u"1.5e3"_s, true);
        row(u"1500"_s, u"1,5E+3"_s, true);
        row(u"0.0015"_s, u"1.5 e -3"_s, true);
        row(u"7"_s, u"007"_s, true);
        // no numbers, and so not 0 either
        row(u"0.0|1.0"_s, u"1e"_s, false);
        row(u"0.0|1.0"_s, u"1e+"_s, false);
        row(u"0.0"_s, u"+"_s, false);
        row(u"0.0"_s, u"-"_s, false);
        row(u"0.0"_s, u"."_s, false);
        row(u"0.0"_s, u"-."_s, false);
        row(u"0.0"_s, u"e0"_s, false);
        row(u"0.0"_s, u".e0"_s, false);
        row(u"0.0|1.0"_s, u"--1"_s, false);
        row(u"0.0|1.0"_s, u"+-1"_s, false);
        row(u"0.0|1.2"_s, u"1.2.0"_s, false);
        row(u"0.0|1.2"_s, u"1,2,"_s, false);
        row(u"0.0|16.0"_s, u"0x10"_s, false);
        row(u"0.0|1.0"_s, u"0x1p0"_s, false);
        row(u"0.0|1.0"_s, u"1f"_s, false);
        row(u"0.0|1.0"_s, u"1 %"_s, false);
        row(u"0.0|12.0"_s, u"12 !"_s, false);
        row(u"0.0|1.0"_s, u"\u0661"_s, false);  // Arabic-Indic one
        row(u"0.0|1.0"_s, u"１,００"_s, false); // full width is folded for texts alone
        row(u"0.0|-1.0"_s, u"\u22121"_s, false);
        row(u"0.0|1000.0"_s, u"1\u00A0000"_s, false); // only the ordinary space goes
        row(u"0.0|1000.0"_s, u"1\t000"_s, false);
        row(u"1000.0"_s, u"\u00A01000\u3000"_s, true); // at the ends, any does
        row(u"1000.0"_s, u"1'000"_s, false);
        row(u"1.0"_s, u"1\0"_s, false);
    }
    void answersAsNumbers()
    {
        QFETCH(QString, expected);
        QFETCH(QString, answer);
        QTEST(accepts(expected, answer), "accepted");
    }

    /// What stands for no finite number can match as text alone.
    void infinityAndNotANumberMatchNoNumber()
    {
        for (const auto &text : {u"nan"_s, u"inf"_s, u"infinity"_s, u"1e999"_s}) {
            QVERIFY(accepts(text, text));
            QVERIFY(!accepts(text, u'+' + text));
            QVERIFY(!accepts(text, u"0.0"_s));
        }
        QVERIFY(!accepts(u"1e999"_s, u"1e998"_s));
        QVERIFY(!accepts(u"1e999"_s, u"-1e999"_s));
        QVERIFY(!accepts(u"inf"_s, u"1e999"_s));
    }

    void aNumberTooSmallForADoubleIsZero()
    {
        QVERIFY(accepts(u"0"_s, u"1e-999"_s));
        QVERIFY(accepts(u"-1e-999"_s, u"0,0"_s));
    }

    void largeNumbersMustBeTheSameDouble()
    {
        QVERIFY(accepts(u"1e300"_s, u"10e299"_s));
        QVERIFY(!accepts(u"1e300"_s, u"1.0000001e300"_s));
        QVERIFY(accepts(u"9007199254740993"_s, u"9007199254740992.0"_s)); // 2^53 + 1 is no double
    }

    void manyDigitsAreOneNumber()
    {
        const auto zeros = QString(100'000, u'0');
        QVERIFY(accepts(u"1"_s, zeros + u"1."_s + zeros));
        QVERIFY(accepts(u"1"_s, u"0."_s + zeros + u"1e100001"_s));
        QVERIFY(!accepts(u"1"_s, u"1"_s + zeros));
    }

    void anEmptyAnswerIsWrongWhateverIsKept()
    {
        QVERIFY(!acceptsAnswer(QString(), QStringList(QString()), u" ! "_s));
    }

    void theLocaleTakesNoPart()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const bool comma = accepts(u"3.5"_s, u"3,5"_s);
        const bool grouped = accepts(u"1000.0"_s, u"1.000"_s);
        QLocale::setDefault(QLocale::c());
        QVERIFY(comma);
        QVERIFY(!grouped);
    }

    void keptAlternativesDecideAsDerivedOnes()
    {
        const auto expected = u"Один|1"_s;
        const auto kept = acceptedAnswers(expected);
        QVERIFY(acceptsAnswer(expected, kept, u"один!"_s));
        QVERIFY(acceptsAnswer(expected, kept, u"1,0"_s));
        QVERIFY(!acceptsAnswer(expected, kept, u"два"_s));
    }
};

QUORVEL_TEST(TestAnswerMatching)
#include "tst_answerMatching.moc"
