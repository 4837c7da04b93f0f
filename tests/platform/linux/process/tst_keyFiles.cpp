#include "DesktopEntry.h"
#include "keyFiles.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class tst_keyFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void valueOfAKey_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("value"); // "-" for none
        QTest::newRow("plain") << QByteArray("[G]\nk=v\n") << QByteArray("v");
        QTest::newRow("no line end") << QByteArray("[G]\nk=v") << QByteArray("v");
        QTest::newRow("spaces and CR") << QByteArray("[G]\r\n k = v w \r\n") << QByteArray("v w");
        QTest::newRow("empty value") << QByteArray("[G]\nk=\n") << QByteArray("");
        QTest::newRow("an equals sign in it") << QByteArray("[G]\nk=a=b\n") << QByteArray("a=b");
        QTest::newRow("another group") << QByteArray("[H]\nk=v\n") << QByteArray("-");
        QTest::newRow("before any group") << QByteArray("k=v\n[G]\n") << QByteArray("-");
        QTest::newRow("after another group") << QByteArray("[G]\n[H]\nk=w\n[G]\nk=v\n") << QByteArray("v");
        QTest::newRow("a comment") << QByteArray("[G]\n#k=v\n") << QByteArray("-");
        QTest::newRow("a longer key") << QByteArray("[G]\nkk=v\n") << QByteArray("-");
        QTest::newRow("nothing") << QByteArray() << QByteArray("-");
        QTest::newRow("no text") << QByteArray("\0\xff\n[G\n[G]\nk=v", 13) << QByteArray("v");
    }
    void valueOfAKey()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, value);
        QCOMPARE(keyFileValue(bytes, "G", "k").value_or("-"), value);
    }

    void aKeyOfAnyGroup_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("hasKey");
        QTest::newRow("first") << QByteArray("[Default Applications]\nx/y=a.desktop\n") << true;
        QTest::newRow("any group") << QByteArray("[A]\nb=c\n[Removed Associations]\r\nx/y = a;\r\n") << true;
        QTest::newRow("comment") << QByteArray("[A]\n # x/y=a.desktop\n#x/y=a.desktop") << false;
        QTest::newRow("longer key") << QByteArray("[A]\nx/yz=a.desktop\n") << false;
        QTest::newRow("as a value") << QByteArray("[A]\nb=x/y\n") << false;
        QTest::newRow("no equals sign") << QByteArray("[A]\nx/y\n") << false;
        QTest::newRow("a header") << QByteArray("[x/y=]\n") << false;
    }
    void aKeyOfAnyGroup()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, hasKey);
        QCOMPARE(keyFileHasKey(bytes, "x/y"), hasKey);
    }

    void aLineIsAddedAndAllElseStays_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("no file") << QByteArray() << QByteArray("[G]\nk=v\n");
        QTest::newRow("the group") << QByteArray("# c\n[G]\na=b\n[H]\n")
                                   << QByteArray("# c\n[G]\nk=v\na=b\n[H]\n");
        QTest::newRow("another group") << QByteArray("[H]\na=b\n") << QByteArray("[H]\na=b\n[G]\nk=v\n");
        QTest::newRow("no line end") << QByteArray("[H]\na=b") << QByteArray("[H]\na=b\n[G]\nk=v\n");
        QTest::newRow("header without line end") << QByteArray("[H]\n[G]") << QByteArray("[H]\n[G]\nk=v\n");
        QTest::newRow("DOS lines") << QByteArray("[G]\r\na=b\r\n") << QByteArray("[G]\r\nk=v\na=b\r\n");
        QTest::newRow("spaces") << QByteArray("  [G]  \n\n\n") << QByteArray("  [G]  \nk=v\n\n\n");
        QTest::newRow("twice the group")
            << QByteArray("[G]\na=b\n[G]\n") << QByteArray("[G]\nk=v\na=b\n[G]\n");
        QTest::newRow("no text") << QByteArray("\0\xff\n\n", 4) << QByteArray("\0\xff\n\n[G]\nk=v\n", 12);
        QTest::newRow("a comment of the group") << QByteArray("#[G]\n") << QByteArray("#[G]\n[G]\nk=v\n");
    }
    void aLineIsAddedAndAllElseStays()
    {
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        QCOMPARE(keyFileWithLine(before, "G", "k=v"), after);
    }

    void programInExec_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QByteArray>("exec");
        QTest::newRow("plain") << u"/opt/Quorvel-1.0/bin/quorvel"_s
                               << QByteArray("/opt/Quorvel-1.0/bin/quorvel %u");
        QTest::newRow("Cyrillic") << u"/home/аня/quorvel"_s << QByteArray("/home/аня/quorvel %u");
        QTest::newRow("space") << u"/a b/quorvel"_s << QByteArray("\"/a b/quorvel\" %u");
        QTest::newRow("apostrophe") << u"/a'b/quorvel"_s << QByteArray("\"/a'b/quorvel\" %u");
        QTest::newRow("quote") << u"/a\"b/quorvel"_s << QByteArray("\"/a\\\\\"b/quorvel\" %u");
        QTest::newRow("dollar") << u"/a$b/quorvel"_s << QByteArray("\"/a\\\\$b/quorvel\" %u");
        QTest::newRow("backtick") << u"/a`b/quorvel"_s << QByteArray("\"/a\\\\`b/quorvel\" %u");
        QTest::newRow("backslash") << u"/a\\b/quorvel"_s << QByteArray("\"/a\\\\\\\\b/quorvel\" %u");
        QTest::newRow("line end") << u"/a\nb/quorvel"_s << QByteArray("\"/a\\nb/quorvel\" %u");
        QTest::newRow("percent") << u"/100%/quorvel"_s << QByteArray("env /100%%/quorvel %u");
        QTest::newRow("field code") << u"/%u %/quorvel"_s << QByteArray("env \"/%%u %%/quorvel\" %u");
        QTest::newRow("key file signs") << u"/a=[b]/quorvel"_s << QByteArray("/a=[b]/quorvel %u");
    }
    void programInExec()
    {
        QFETCH(QString, program);
        QFETCH(QByteArray, exec);
        QCOMPARE(execValue(program), exec);

        const auto entry = parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=" + exec + '\n', {});
        QVERIFY(entry);
        QStringList words = entry->command; // the address is left out, or an empty word
        words.removeAll(u""_s);
        words.removeAll(u"env"_s);
        QCOMPARE(words, QStringList{program});
    }
};

QUORVEL_TEST(tst_keyFiles, QCoreApplication)
#include "tst_keyFiles.moc"
