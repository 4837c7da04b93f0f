#include "settingsDrafts.h"
#include "suite.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr auto largest = std::numeric_limits<qint64>::max();
constexpr auto smallest = std::numeric_limits<qint64>::min();

QuorvelConfig numbers(qint64 study, qint64 rest, qint64 idle, qint64 proofs)
{
    QuorvelConfig config;
    config.studyMinutes = study;
    config.breakMinutes = rest;
    config.maxIdleSeconds = idle;
    config.requiredProofsToUnlock = proofs;
    return config;
}

qint64 studyMinutesFrom(const QString &draft)
{
    auto drafts = draftsFrom(QuorvelConfig::defaults());
    drafts.studyMinutesText = draft;
    return configFrom(drafts, QuorvelConfig::defaults()).studyMinutes;
}

} // namespace

class TestSettingsDrafts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void draftsShowPlainNumbersAndOneEntryALine()
    {
        QuorvelConfig config;
        config.studyMinutes = 12345;
        config.breakMinutes = -7;
        config.maxIdleSeconds = largest;
        config.requiredProofsToUnlock = smallest;
        config.blockedApps = QStringList{u"Steam"_s, u"Музыка"_s};
        config.allowedStudyApps = QStringList{u"Anki"_s};
        const auto drafts = draftsFrom(config);
        QCOMPARE(drafts.studyMinutesText, u"12345"_s);
        QCOMPARE(drafts.breakMinutesText, u"-7"_s);
        QCOMPARE(drafts.maxIdleSecondsText, u"9223372036854775807"_s);
        QCOMPARE(drafts.requiredProofsText, u"-9223372036854775808"_s);
        QCOMPARE(drafts.blockedAppsText, u"Steam\nМузыка"_s);
        QCOMPARE(drafts.blockedDomainsText, QString());
        QCOMPARE(drafts.allowedStudyDomainsText, QString());
        QCOMPARE(drafts.allowedStudyAppsText, u"Anki"_s);
    }

    void settingsInTheirRangesComeBackUnchanged()
    {
        auto config = QuorvelConfig::defaults();
        config.blocklistPresetVersion = 17;
        QCOMPARE(configFrom(draftsFrom(config), config), config);
    }

    void eachDraftGoesToItsOwnField()
    {
        const SettingsDrafts drafts{
            .studyMinutesText = u"31"_s,
            .breakMinutesText = u"32"_s,
            .maxIdleSecondsText = u"33"_s,
            .requiredProofsText = u"4"_s,
            .blockedAppsText = u"a"_s,
            .blockedDomainsText = u"b"_s,
            .allowedStudyDomainsText = u"c"_s,
            .allowedStudyAppsText = u"d"_s,
        };
        QuorvelConfig inForce;
        inForce.blocklistPresetVersion = 9;
        const auto config = configFrom(drafts, inForce);
        QCOMPARE(config.studyMinutes, 31);
        QCOMPARE(config.breakMinutes, 32);
        QCOMPARE(config.maxIdleSeconds, 33);
        QCOMPARE(config.requiredProofsToUnlock, 4);
        QCOMPARE(config.blockedApps, QStringList(u"a"_s));
        QCOMPARE(config.blockedDomains, QStringList(u"b"_s));
        QCOMPARE(config.allowedStudyDomains, QStringList(u"c"_s));
        QCOMPARE(config.allowedStudyApps, QStringList(u"d"_s));
        QCOMPARE(config.blocklistPresetVersion, 9);
        QCOMPARE(draftsFrom(config), drafts);
    }

    void whatIsANumber_data()
    {
        QTest::addColumn<QString>("draft");
        QTest::addColumn<qint64>("minutes");
        const qint64 kept = QuorvelConfig::defaults().studyMinutes;
        const auto row = [](const char *name, const QString &draft, qint64 minutes) {
            QTest::newRow(name) << draft << minutes;
        };
        row("plain", u"30"_s, 30);
        row("plus", u"+30"_s, 30);
        row("white space at the ends", u" \t30\u00A0\r\n"_s, 30);
        row("leading zeros", u"0000000000000000000000030"_s, 30);
        row("largest", u"9223372036854775807"_s, 240);
        row("smallest", u"-9223372036854775808"_s, 1);
        row("beyond the largest", u"9223372036854775808"_s, kept);
        row("beyond the smallest", u"-9223372036854775809"_s, kept);
        row("far beyond", QString(1000, u'9'), kept);
        row("empty", u""_s, kept);
        row("white space alone", u" \n"_s, kept);
        row("with its unit", u"25 min"_s, kept);
        row("a word", u"thirty"_s, kept);
        row("sign alone", u"+"_s, kept);
        row("minus alone", u"-"_s, kept);
        row("two signs", u"+-30"_s, kept);
        row("space after the sign", u"- 30"_s, kept);
        row("space inside", u"3 0"_s, kept);
        row("fraction", u"30.0"_s, kept);
        row("grouped", u"1,000"_s, kept);
        row("exponent", u"3e1"_s, kept);
        row("hexadecimal", u"0x1E"_s, kept);
        row("Arabic-Indic digits", u"\u0663\u0660"_s, kept);
        row("full-width digits", u"３０"_s, kept);
        row("minus of mathematics", u"\u221230"_s, kept);
        row("NUL", u"30\0"_s, kept);
        row("digit that Latin-1 has not", u"3\u0130"_s, kept);
    }
    void whatIsANumber()
    {
        QFETCH(QString, draft);
        QTEST(studyMinutesFrom(draft), "minutes");
    }

    void aNumberTypedWithPlusIsShownWithout()
    {
        auto drafts = draftsFrom(QuorvelConfig::defaults());
        drafts.studyMinutesText = u"+30"_s;
        QCOMPARE(draftsFrom(configFrom(drafts, QuorvelConfig::defaults())).studyMinutesText, u"30"_s);
    }

    void zeroStudyMinutesBecomeOne() { QCOMPARE(studyMinutesFrom(u"0"_s), 1); }

    void numbersArePulledIntoTheirRanges()
    {
        auto drafts = draftsFrom({});
        drafts.studyMinutesText = drafts.breakMinutesText = drafts.maxIdleSecondsText = u"9999"_s;
        drafts.requiredProofsText = u"21"_s;
        QCOMPARE(draftsFrom(configFrom(drafts, {})), draftsFrom(numbers(240, 240, 3600, 20)));
        drafts.studyMinutesText = drafts.breakMinutesText = drafts.requiredProofsText = u"-3"_s;
        drafts.maxIdleSecondsText = u"14"_s;
        QCOMPARE(draftsFrom(configFrom(drafts, {})), draftsFrom(numbers(1, 1, 15, 0)));
    }

    void theEndsOfTheRangesAreKept()
    {
        const auto lowest = numbers(1, 1, 15, 0);
        const auto highest = numbers(240, 240, 3600, 20);
        QCOMPARE(configFrom(draftsFrom(lowest), {}), lowest);
        QCOMPARE(configFrom(draftsFrom(highest), {}), highest);
    }

    void aNumberInForceThatIsOutOfRangeIsPulledInToo()
    {
        QCOMPARE(configFrom({}, numbers(1000, -1, 0, 99)), numbers(240, 1, 15, 20));
        QCOMPARE(configFrom({}, numbers(0, largest, smallest, -1)), numbers(1, 240, 15, 0));
    }

    void oneEntryALine_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("entries");
        const auto row = [](const char *name, const QString &text, const QStringList &entries) {
            QTest::newRow(name) << text << entries;
        };
        const QStringList two{u"a"_s, u"b"_s};
        row("empty", QString(), {});
        row("only line breaks and spaces", u"\n \r\n\t\u2028"_s, {});
        row("one without a line break", u"a"_s, {u"a"_s});
        row("repeats are exact", u"Steam\n  Steam  \n\nsteam"_s, {u"Steam"_s, u"steam"_s});
        row("order of the first", u"b\na\nb\nc\na"_s, {u"b"_s, u"a"_s, u"c"_s});
        row("spaces inside stay", u"Epic  Games Launcher"_s, {u"Epic  Games Launcher"_s});
        row("line feed", u"a\nb\n"_s, two);
        row("vertical tab", u"a\vb"_s, two);
        row("form feed", u"a\fb"_s, two);
        row("carriage return", u"a\rb"_s, two);
        row("carriage return and line feed", u"a\r\nb"_s, two);
        row("next line", u"a\u0085b"_s, two);
        row("line separator", u"a\u2028b"_s, two);
        row("paragraph separator", u"a\u2029b"_s, two);
        row("tab breaks no line", u"a\tb"_s, {u"a\tb"_s});
        row("no-break space is trimmed", u"\u00A0a\u3000\nb"_s, two);
        row("letters that share a byte with a line break", u"\u010A\u200A\u0428"_s,
            {u"\u010A\u200A\u0428"_s});
    }
    void oneEntryALine()
    {
        QFETCH(QString, text);
        QTEST(parseEditorLines(text), "entries");
    }

    void anEmptyListDraftGivesAnEmptyList()
    {
        auto config = QuorvelConfig::defaults();
        config.allowedStudyDomains = QStringList{u"example.org"_s};
        auto drafts = draftsFrom(config);
        drafts.allowedStudyDomainsText.clear();
        QCOMPARE(configFrom(drafts, config).allowedStudyDomains, QStringList());
    }
};

QUORVEL_TEST(TestSettingsDrafts)
#include "tst_settingsDrafts.moc"
