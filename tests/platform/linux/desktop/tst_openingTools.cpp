// What is written for the desktop, read by the tools that open addresses there.
#include "FailingFileCalls.h"
#include "desktopParts.h"
#include "schemeHandler.h"
#include "testFiles.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestFiles;

class tst_openingTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theProgramGetsTheAddress_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("forXdgOpen"); // which reads no quotes where there is no desktop environment
        QTest::newRow("plain") << u"Quorvel-1.0"_s << true;
        QTest::newRow("Cyrillic") << u"Программы"_s << true;
        QTest::newRow("space") << u"a b"_s << false;
        QTest::newRow("quotes") << u"a\"b'c`d"_s << false;
        QTest::newRow("dollar") << u"a$HOME"_s << false;
        QTest::newRow("backslash") << u"a\\b\\"_s << false;
        QTest::newRow("percent") << u"100%u %%"_s << false;
        QTest::newRow("line end") << u"a\nb\tc"_s << false;
        QTest::newRow("key file signs") << u"[a]=#;b"_s << false;
    }
    void theProgramGetsTheAddress()
    {
        QFETCH(QString, folder);
        QFETCH(bool, forXdgOpen);
        const QTemporaryDir home;
        const auto program = home.filePath(folder + u"/quorvel"_s);
        const auto got = home.filePath(u"got"_s);
        QVERIFY(QDir().mkpath(QFileInfo(program).path()));
        put(program, "#!/bin/sh\nprintf '%s|' \"$@\" >'" + QFile::encodeName(got) + ".new'\nmv '" +
                         QFile::encodeName(got) + ".new' '" + QFile::encodeName(got) + "'\n");
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        FailingFileCalls calls; // none fails, and no disk is waited for
        QCOMPARE(registerSchemeHandler(
                     calls, {program, home.filePath(u"data"_s), {}, home.filePath(u"config"_s), {}, {}})
                     .size(),
                 2);

        const auto address = u"quorvel://auth?session=1&email=a%40b.org"_s;
        const auto environment = environmentIn(home);
        outputOf(environment, u"gio"_s, {u"open"_s, address});
        TRY_COMPARE(QString::fromUtf8(content(got)), address + u'|');
        if (!forXdgOpen)
            return;
        QVERIFY(QFile::remove(got));
        outputOf(environment, u"xdg-open"_s, {address});
        TRY_COMPARE(QString::fromUtf8(content(got)), address + u'|');
    }

private:
    static QProcessEnvironment environmentIn(const QTemporaryDir &home)
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.remove(u"XDG_CURRENT_DESKTOP"_s);
        environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
        environment.insert(u"DISPLAY"_s, u":none"_s); // xdg-open asks only whether there is one
        environment.insert(u"HOME"_s, home.path());
        environment.insert(u"XDG_RUNTIME_DIR"_s, home.path());
        environment.insert(u"XDG_DATA_HOME"_s, home.filePath(u"data"_s));
        environment.insert(u"XDG_DATA_DIRS"_s, home.filePath(u"share"_s));
        environment.insert(u"XDG_CONFIG_HOME"_s, home.filePath(u"config"_s));
        environment.insert(u"XDG_CONFIG_DIRS"_s, home.filePath(u"etc"_s));
        return environment;
    }
};

QTEST_GUILESS_MAIN(tst_openingTools)
#include "tst_openingTools.moc"
