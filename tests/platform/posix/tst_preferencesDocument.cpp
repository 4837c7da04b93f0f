#include "PreferencesDocument.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class tst_preferencesDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCommentIsWrittenTheSameEachTime()
    {
        const auto once = PreferencesDocument::fromBytes("# mine\r\r\na = 1\r\n").bytes();
        QCOMPARE(once, QByteArray("# mine\na = 1\n"));
        QCOMPARE(PreferencesDocument::fromBytes(once).bytes(), once);
    }

    void keepsEveryOtherLine();
    void leavesOutWhatItDoesNotUnderstand();
    void readsWhatEditorsWrite_data();
    void readsWhatEditorsWrite();
    void theLaterLineCounts();
    void removesALine();
    void isEmptyAtFirst();
};

void tst_preferencesDocument::keepsEveryOtherLine()
{
    auto document =
        PreferencesDocument::fromBytes("# mine\n\nlanguage=\"ru\"\n  # in between \nb = 1\nc = 2\n");
    QCOMPARE(document.linesNotUnderstood(), 0);
    document.set(u"b"_s, qint64(7));
    document.set(u"d"_s, true);
    QCOMPARE(document.bytes(),
             QByteArray("# mine\n\nlanguage=\"ru\"\n  # in between \nb = 7\nc = 2\nd = true\n"));
    QVERIFY(document.value(u"language"_s) == PreferenceValue(u"ru"_s));
    QVERIFY(document.value(u"b"_s) == PreferenceValue(qint64(7)));
}

void tst_preferencesDocument::leavesOutWhatItDoesNotUnderstand()
{
    const auto document = PreferencesDocument::fromBytes("a = 1\nb = 1.5\nc = null\n?\nd = 2\n");
    QCOMPARE(document.linesNotUnderstood(), 3);
    QCOMPARE(document.bytes(), QByteArray("a = 1\nd = 2\n"));
    QVERIFY(!document.value(u"c"_s));
}

void tst_preferencesDocument::readsWhatEditorsWrite_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("lines end in LF") << QByteArray("a = 1\nb = 2\n");
    QTest::newRow("lines end in CR LF") << QByteArray("a = 1\r\nb = 2\r\n");
    QTest::newRow("the last line does not end") << QByteArray("a = 1\nb = 2");
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "a = 1\nb = 2\n");
}

void tst_preferencesDocument::readsWhatEditorsWrite()
{
    QFETCH(QByteArray, bytes);
    auto document = PreferencesDocument::fromBytes(bytes);
    QCOMPARE(document.linesNotUnderstood(), 0);
    document.set(u"c"_s, qint64(3));
    QCOMPARE(document.bytes(), QByteArray("a = 1\nb = 2\nc = 3\n"));
}

void tst_preferencesDocument::theLaterLineCounts()
{
    auto document = PreferencesDocument::fromBytes("a = 1\nb = 2\na = 3\n");
    QVERIFY(document.value(u"a"_s) == PreferenceValue(qint64(3)));
    QCOMPARE(document.bytes(), QByteArray("b = 2\na = 3\n"));
    document.set(u"a"_s, std::nullopt);
    QCOMPARE(document.bytes(), QByteArray("b = 2\n"));
}

void tst_preferencesDocument::removesALine()
{
    auto document = PreferencesDocument::fromBytes("a = 1\n# b\nb = 2\n");
    document.set(u"b"_s, std::nullopt);
    document.set(u"absent"_s, std::nullopt);
    QVERIFY(!document.value(u"b"_s));
    QCOMPARE(document.bytes(), QByteArray("a = 1\n# b\n"));
    document.set(u"b"_s, u"again"_s);
    QCOMPARE(document.bytes(), QByteArray("a = 1\n# b\nb = \"again\"\n"));
}

void tst_preferencesDocument::isEmptyAtFirst()
{
    PreferencesDocument document;
    QCOMPARE(document.bytes(), QByteArray());
    QVERIFY(!document.value(u"a"_s));
}

QUORVEL_TEST(tst_preferencesDocument)
#include "tst_preferencesDocument.moc"
