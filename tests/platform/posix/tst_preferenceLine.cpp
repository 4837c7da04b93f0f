#include "preferenceLine.h"
#include "suite.h"

#include <limits>

using namespace Qt::StringLiterals;
using Kind = PreferenceLine::Kind;

Q_DECLARE_METATYPE(PreferenceValue)

namespace {

constexpr qint64 smallest = std::numeric_limits<qint64>::min();
constexpr qint64 largest = std::numeric_limits<qint64>::max();

} // namespace

class tst_preferenceLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reads_data();
    void reads();
    void skips_data();
    void skips();
    void doesNotUnderstand_data();
    void doesNotUnderstand();
    void writesWhatItReads_data();
    void writesWhatItReads();
    void writesReadableText();
    void knowsKeys_data();
    void knowsKeys();
    void readsAndWritesRemovals();
};

void tst_preferenceLine::reads_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<PreferenceValue>("value");

    QTest::newRow("true") << QByteArray("key = true") << PreferenceValue(true);
    QTest::newRow("false") << QByteArray("key = false") << PreferenceValue(false);
    QTest::newRow("integer") << QByteArray("key = 1500") << PreferenceValue(qint64(1500));
    QTest::newRow("zero") << QByteArray("key = 0") << PreferenceValue(qint64(0));
    QTest::newRow("minus zero") << QByteArray("key = -0") << PreferenceValue(qint64(0));
    QTest::newRow("largest") << QByteArray("key = 9223372036854775807") << PreferenceValue(largest);
    QTest::newRow("smallest") << QByteArray("key = -9223372036854775808") << PreferenceValue(smallest);
    QTest::newRow("no double holds it")
        << QByteArray("key = 9007199254740993") << PreferenceValue(qint64(9007199254740993));
    QTest::newRow("text") << QByteArray("key = \"ru\"") << PreferenceValue(u"ru"_s);
    QTest::newRow("empty text") << QByteArray("key = \"\"") << PreferenceValue(u""_s);
    QTest::newRow("text that looks like a number") << QByteArray("key = \"1\"") << PreferenceValue(u"1"_s);
    QTest::newRow("UTF-8") << QByteArray("key = \"\xd0\xaf\"") << PreferenceValue(u"Я"_s);
    QTest::newRow("sign in the text") << QByteArray("key = \"a = # b\"") << PreferenceValue(u"a = # b"_s);
    QTest::newRow("escapes") << QByteArray(R"(key = "\"\\\/\b\f\n\r\t\u0416\u00e9\u00E9")")
                             << PreferenceValue(u"\"\\/\b\f\n\r\tЖéé"_s);
    QTest::newRow("surrogate pair") << QByteArray(R"(key = "\ud83d\ude00")") << PreferenceValue(u"😀"_s);
    QTest::newRow("without blanks") << QByteArray("key=1") << PreferenceValue(qint64(1));
    QTest::newRow("with blanks and tabs") << QByteArray(" \tkey\t =  1\t ") << PreferenceValue(qint64(1));
}

void tst_preferenceLine::reads()
{
    QFETCH(QByteArray, line);
    QFETCH(PreferenceValue, value);
    const PreferenceLine expected = {Kind::Value, u"key"_s, value};
    QVERIFY(readPreferenceLine(line) == expected);
}

void tst_preferenceLine::skips_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("blanks") << QByteArray(" \t ");
    QTest::newRow("comment") << QByteArray("# key = 1");
    QTest::newRow("comment after blanks") << QByteArray("  #");
    QTest::newRow("comment in another encoding") << QByteArray("# \xff\xfe");
}

void tst_preferenceLine::skips()
{
    QFETCH(QByteArray, line);
    QVERIFY(readPreferenceLine(line).kind == Kind::Blank);
}

void tst_preferenceLine::doesNotUnderstand_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char *line : {"key",
                             "key =",
                             "= 1",
                             "key 1",
                             "key = ru",
                             "key = True",
                             "key = 1.0",
                             "key = 1e3",
                             "key = 01",
                             "key = -01",
                             "key = +1",
                             "key = -",
                             "key = 0x10",
                             "key = 9223372036854775808",
                             "key = -9223372036854775809",
                             "key = 99999999999999999999999",
                             "key = [1]",
                             "key = {}",
                             "key = 'ru'",
                             "key = \"ru",
                             "key = \"",
                             "key = \"ru\" # comment",
                             "key = \"a\"b\"",
                             "key = 1 2",
                             R"(key = "\")",
                             R"(key = "\x")",
                             R"(key = "\u12")",
                             R"(key = "\u12g4")",
                             R"(key = "\U0041")",
                             "key = \"a\tb\"",
                             "key = \"\xff\"",
                             "key = \"\xed\xa0\x80\"",
                             "two words = 1",
                             "ключ = 1",
                             "key[] = 1",
                             "[section]",
                             "key == 1",
                             "\xef\xbb\xbfkey = 1",
                             "key = NULL",
                             "<html>"})
        QTest::addRow("%s", line) << QByteArray(line);
    QTest::newRow("zeros") << QByteArray(100, '\0');
    QTest::newRow("zeros after a number") << QByteArray("key = 9\0\0\0", 10);
    QTest::newRow("zeros before a key") << QByteArray("\0\0ey = 9", 8);
}

void tst_preferenceLine::doesNotUnderstand()
{
    QFETCH(QByteArray, line);
    QVERIFY(readPreferenceLine(line).kind == Kind::NotUnderstood);
}

void tst_preferenceLine::writesWhatItReads_data()
{
    QTest::addColumn<PreferenceValue>("value");
    QTest::newRow("true") << PreferenceValue(true);
    QTest::newRow("false") << PreferenceValue(false);
    for (const qint64 number : {qint64(0), qint64(-1), qint64(9007199254740993), smallest, largest})
        QTest::addRow("%lld", static_cast<long long>(number)) << PreferenceValue(number);
    QTest::newRow("empty") << PreferenceValue(u""_s);
    QTest::newRow("line ends") << PreferenceValue(u"a\nb\r\nc\rd\u2028e\u0085f"_s);
    QTest::newRow("quotation marks and backslashes") << PreferenceValue(u"\"\\\"\\n\\u0041"_s);
    QTest::newRow("zero character") << PreferenceValue(u"a"_s + QChar(0) + u"b"_s);
    QTest::newRow("byte order mark") << PreferenceValue(u"\ufeffa\ufeff"_s);
    QTest::newRow("emoji") << PreferenceValue(u"😀🇷🇺"_s);
    QTest::newRow("noncharacters") << PreferenceValue(QString(QChar(0xffff)) + QChar(0xfffe) + QChar(0xfdd0));
    QTest::newRow("high half at the end") << PreferenceValue(u"a"_s + QChar(0xd83d));
    QTest::newRow("low half at the start") << PreferenceValue(QChar(0xde00) + u"a"_s);
    QTest::newRow("halves the wrong way round") << PreferenceValue(QString(QChar(0xde00)) + QChar(0xd83d));
    QTest::newRow("half, then a pair") << PreferenceValue(QChar(0xd83d) + u"😀"_s + QChar(0xde00));
    QString all;
    for (int code = 0; code < 0x10000; ++code)
        all += QChar(code);
    QTest::newRow("each unit of UTF-16") << PreferenceValue(all);
}

void tst_preferenceLine::writesWhatItReads()
{
    QFETCH(PreferenceValue, value);
    const QByteArray line = writePreferenceLine(u"key"_s, value);
    QVERIFY(!line.contains('\n') && !line.contains('\r') && !line.contains('\0'));
    QCOMPARE(QString::fromUtf8(line).toUtf8(), line);
    const PreferenceLine expected = {Kind::Value, u"key"_s, value};
    QVERIFY(readPreferenceLine(line) == expected);
}

void tst_preferenceLine::writesReadableText()
{
    QCOMPARE(writePreferenceLine(u"language"_s, u"ru"_s), QByteArray("language = \"ru\""));
    QCOMPARE(writePreferenceLine(u"studySeconds-2026-11-20"_s, qint64(1500)),
             QByteArray("studySeconds-2026-11-20 = 1500"));
    QCOMPARE(writePreferenceLine(u"proModeEnabled"_s, true), QByteArray("proModeEnabled = true"));
    QCOMPARE(writePreferenceLine(u"name"_s, u"Аня \"А\"\n"_s), QByteArray("name = \"Аня \\\"А\\\"\\n\""));
}

void tst_preferenceLine::knowsKeys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isKey");
    for (const QString &key : {u"language"_s, u"studySeconds-2026-11-20"_s, u"a_b.C"_s, u"1"_s, u"-"_s})
        QTest::addRow("%s", qPrintable(key)) << key << true;
    for (const QString &key : {u""_s, u"a b"_s, u"a=b"_s, u"#a"_s, u"ключ"_s, u"é"_s, u"a\n"_s, u"a/b"_s,
                               u"\"a\""_s, u"[a]"_s, u"a@b"_s, u"a`"_s, u"a{"_s, u"\u212a"_s})
        QTest::addRow("not %s", qPrintable(key)) << key << false;
}

void tst_preferenceLine::knowsKeys()
{
    QFETCH(QString, key);
    QTEST(isPreferenceKey(key), "isKey");
}

void tst_preferenceLine::readsAndWritesRemovals()
{
    QCOMPARE(writePreferenceLine(u"key"_s, std::nullopt), QByteArray("key = null"));
    const PreferenceLine expected = {Kind::Removal, u"key"_s, {}};
    QVERIFY(readPreferenceLine("key = null") == expected);
}

QUORVEL_TEST(tst_preferenceLine)
#include "tst_preferenceLine.moc"
