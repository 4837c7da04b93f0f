#include "DesktopEntry.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestDesktopEntry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnApplication()
    {
        const auto entry = parseDesktopEntry("# comment\n"
                                             "[Desktop Entry]\r\n"
                                             "Type = Application\n"
                                             "Name=Steam\\sClient\n"
                                             "Exec=/usr/bin/steam %U\n"
                                             "TryExec=/usr/bin/steam\n"
                                             "StartupWMClass=steam\n"
                                             "Categories=Network;TerminalEmulator;\n"
                                             "NoDisplay=true\nTerminal=false\nX-SnapInstanceName=steam\n"
                                             "[Desktop Action Store]\nName=Store\nExec=steam steam://store\n",
                                             {});
        QVERIFY(entry);
        QCOMPARE(entry->name, u"Steam Client"_s);
        QCOMPARE(entry->command, QStringList{u"/usr/bin/steam"_s});
        QCOMPARE(entry->tryExec, u"/usr/bin/steam"_s);
        QCOMPARE(entry->startupWmClass, u"steam"_s);
        QVERIFY(entry->noDisplay && entry->terminalEmulator);
        QVERIFY(!entry->runsInTerminal && !entry->hidden);
    }

    void namesByLocale_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << u"C"_s << u"plain"_s;
        QTest::newRow("empty") << QString() << u"plain"_s;
        QTest::newRow("language") << u"ru_RU.UTF-8"_s << u"ru"_s;
        QTest::newRow("country first") << u"sr_YU.UTF-8"_s << u"sr_YU"_s;
        QTest::newRow("all parts first") << u"sr_YU@Latn"_s << u"sr_YU@Latn"_s;
        QTest::newRow("modifier before language") << u"sr_BA@Latn"_s << u"sr@Latn"_s;
        QTest::newRow("unknown modifier") << u"sr_BA@ijekavian"_s << u"sr"_s;
        QTest::newRow("another language") << u"de_DE"_s << u"plain"_s;
        QTest::newRow("country without the plain language") << u"pt_BR.UTF-8"_s << u"pt_BR"_s;
        QTest::newRow("another country") << u"pt_PT.UTF-8"_s << u"plain"_s;
    }
    void namesByLocale()
    {
        QFETCH(QString, locale);
        const QByteArray text = "[Desktop Entry]\nType=Application\nName[sr@Latn]=sr@Latn\nName[ru]=ru\n"
                                "Name[sr_YU@Latn]=sr_YU@Latn\nName=plain\nName[sr]=sr\nName[sr_YU]=sr_YU\n"
                                "Name[pt_BR]=pt_BR\n";
        const auto entry = parseDesktopEntry(text, localeNames(locale));
        QVERIFY(entry);
        QTEST(entry->name, "name");
    }

    void splitsCommands_data()
    {
        QTest::addColumn<QString>("exec");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("field codes") << u"app --open %U -x %% %f"_s
                                     << QStringList{u"app"_s, u"--open"_s, u"-x"_s, u"%"_s};
        QTest::newRow("quotes") << u"\"/opt/My App/run\" \"a \\\"b\\\" \\$c\""_s
                                << QStringList{u"/opt/My App/run"_s, u"a \"b\" $c"_s};
        QTest::newRow("empty word") << u"app \"\""_s << QStringList{u"app"_s, QString()};
        QTest::newRow("open quote") << u"app \"rest"_s << QStringList();
        QTest::newRow("nothing") << QString() << QStringList();
        QTest::newRow("lone percent") << u"app %"_s << QStringList{u"app"_s, u"%"_s};
    }
    void splitsCommands()
    {
        QFETCH(QString, exec);
        QTEST(splitCommand(exec), "words");
    }

    void onlyBlanksDivideWords()
    {
        QCOMPARE(splitCommand(u"/opt/My\u00a0App/run\u2003er\v x\ty\nz"_s),
                 (QStringList{u"/opt/My\u00a0App/run\u2003er\v"_s, u"x"_s, u"y"_s, u"z"_s}));
    }

    void refusesWhatIsNoApplication_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("link") << QByteArray("[Desktop Entry]\nType=Link\nName=x\n");
        QTest::newRow("no type") << QByteArray("[Desktop Entry]\nName=x\nExec=x\n");
        QTest::newRow("other group") << QByteArray("[Something]\nType=Application\n");
        QTest::newRow("keys before the group") << QByteArray("Type=Application\nName=x\n");
        QTest::newRow("noise") << QByteArray("\xff\xfe\0\0[[[=\n=\n[Desktop", 19);
    }
    void refusesWhatIsNoApplication()
    {
        QFETCH(QByteArray, text);
        QVERIFY(!parseDesktopEntry(text, {}));
    }

    void endsWithHostileNames()
    {
        const QByteArray head = "[Desktop Entry]\nType=Application\nName=";
        const auto longName = parseDesktopEntry(head + QByteArray(10'000, 'x'), {});
        QCOMPARE(longName->name, QString(256, u'x'));
        const auto pairs =
            parseDesktopEntry(head + "x" + QString(u"\U0001F600"_s).repeated(300).toUtf8(), {});
        QVERIFY(!pairs->name.back().isHighSurrogate());
        const auto broken = parseDesktopEntry(head + QByteArray("a\xff\0b\x1b[31m", 9), {});
        QVERIFY(!broken->name.contains(QChar(0)) && !broken->name.contains(QChar(0x1b)));
        const auto nameless = parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=x\n", {});
        QCOMPARE(nameless->name, QString());
    }
};

QUORVEL_TEST(TestDesktopEntry, QCoreApplication)
#include "tst_desktopEntry.moc"
