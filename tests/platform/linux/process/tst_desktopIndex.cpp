#include "MadeSystem.h"
#include "desktopMatching.h"
#include "suite.h"

#include <QDateTime>
#include <QRegularExpression>

#include <sys/inotify.h>
#include <utime.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString idOf(const DesktopEntryPointer &entry)
{
    return entry ? entry->id : QString();
}

/// Dates a folder back, so that the index need not doubt what it read there.
void age(const QString &folder, qint64 seconds)
{
    const auto when = QDateTime::currentSecsSinceEpoch() - seconds;
    const utimbuf times{when, when};
    QCOMPARE(utime(QFile::encodeName(folder).constData(), &times), 0);
}

/// Counts the openings of files in a folder from now on.
class Openings
{
public:
    explicit Openings(const QString &folder)
        : m_watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        inotify_add_watch(m_watch.descriptor(), QFile::encodeName(folder).constData(), IN_OPEN);
    }
    int count() const
    {
        int openings = 0;
        alignas(inotify_event) char events[64 * 1024];
        for (ssize_t got = 0; (got = read(m_watch.descriptor(), events, sizeof events)) > 0;) {
            for (const char *at = events; at < events + got;) {
                const auto *event = reinterpret_cast<const inotify_event *>(at);
                openings += event->len > 0 && !(event->mask & IN_ISDIR); // the folder itself has no name
                at += sizeof(inotify_event) + event->len;
            }
        }
        return openings;
    }

private:
    FileHandle m_watch;
};

} // namespace

class TestDesktopIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyAbsoluteFoldersAreRead()
    {
        const auto before = qgetenv("XDG_DATA_DIRS");
        qputenv("XDG_DATA_DIRS", "share:/made/up/:../x");
        const auto places = DesktopPlaces::ofThisUser();
        qputenv("XDG_DATA_DIRS", before);
        QCOMPARE(places.dataFolders.value(1), u"/made/up"_s);
        for (const auto &folder : places.dataFolders + places.programFolders)
            QVERIFY2(folder.startsWith(u'/'), qPrintable(folder));
    }

    void givesIdsByPath()
    {
        MadeSystem system;
        system.addEntry(u"foo.desktop"_s, "Name=Foo\n");
        system.addEntry(u"kde/deep/bar.desktop"_s, "Name=Bar\n");
        DesktopIndex index(system.places().desktop);
        index.refresh(0s);
        QCOMPARE(index.byId(u"foo"_s)->name, u"Foo"_s);
        QCOMPARE(index.byId(u"kde-deep-bar"_s)->name, u"Bar"_s);
        QVERIFY(!index.byId(u"bar"_s));
    }

    void theFirstFolderWins()
    {
        MadeSystem own;
        MadeSystem system;
        own.addEntry(u"foo.desktop"_s, "Name=Mine\n");
        own.addEntry(u"gone.desktop"_s, "Name=Gone\nHidden=true\n");
        system.addEntry(u"foo.desktop"_s, "Name=Theirs\n");
        system.addEntry(u"gone.desktop"_s, "Name=Still there\n");
        auto places = system.places().desktop;
        places.dataFolders.prepend(own.path(u"data"_s));
        DesktopIndex index(places);
        index.refresh(0s);
        QCOMPARE(index.byId(u"foo"_s)->name, u"Mine"_s);
        QVERIFY(!index.byId(u"gone"_s));
    }

    void findsPrograms_data()
    {
        QTest::addColumn<QString>("program"); // below the made system's folder, unless it starts with '='
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("id");
        QTest::newRow("path") << u"bin/player"_s << QString() << u"player"_s;
        QTest::newRow("name in PATH") << u"bin/painter"_s << QString() << u"org.example.Painter"_s;
        QTest::newRow("behind a link") << u"lib/linked/real"_s << QString() << u"linked"_s;
        QTest::newRow("TryExec") << u"bin/tried"_s << QString() << u"tried"_s;
        QTest::newRow("script") << u"bin/script.py"_s << QString() << u"script"_s;
        QTest::newRow("one of several by argument")
            << u"bin/office"_s << u"--calc /x.ods"_s << u"office-calc"_s;
        QTest::newRow("another of several") << u"bin/office"_s << u"--writer"_s << u"office-writer"_s;
        QTest::newRow("browser, not its web application") << u"bin/web"_s << u"--flag"_s << u"web"_s;
        QTest::newRow("web application") << u"bin/web"_s << u"--app-id=abc"_s << u"web-abc"_s;
        QTest::newRow("a store's game is not the store") << u"bin/store"_s << QString() << QString();
        QTest::newRow("the game") << u"bin/store"_s << u"store://game/7"_s << u"game"_s;
        QTest::newRow("in a terminal") << u"bin/editor"_s << QString() << QString();
        QTest::newRow("a shell") << u"=/bin/bash"_s << QString() << QString();
    }
    void findsPrograms()
    {
        QFETCH(QString, program);
        QFETCH(QString, arguments);
        MadeSystem system;
        const auto player = system.addProgram(u"bin/player"_s);
        for (const auto *name : {"bin/painter", "bin/tried", "bin/script.py", "bin/office", "bin/web",
                                 "bin/store", "bin/editor", "lib/linked/real"})
            system.addProgram(QString::fromLatin1(name));
        QFile::link(system.path(u"lib/linked/real"_s), system.path(u"bin/linked"_s));
        system.addEntry(u"player.desktop"_s, "Exec=\"" + player.toUtf8() + "\" %U\n");
        system.addEntry(u"org.example.Painter.desktop"_s, "Exec=env A=b painter\n");
        system.addEntry(u"linked.desktop"_s, "Exec=linked\n");
        system.addEntry(u"tried.desktop"_s, "Exec=missing\nTryExec=tried\n");
        system.addEntry(u"script.desktop"_s,
                        "Exec=python3 " + system.path(u"bin/script.py"_s).toUtf8() + "\n");
        system.addEntry(u"office-writer.desktop"_s, "Exec=office --writer %U\n");
        system.addEntry(u"office-calc.desktop"_s, "Exec=office --calc %U\n");
        system.addEntry(u"web.desktop"_s, "Exec=web %U\n");
        system.addEntry(u"web-abc.desktop"_s, "Exec=web --app-id=abc\n");
        system.addEntry(u"game.desktop"_s, "Exec=store store://game/7\n");
        system.addEntry(u"editor.desktop"_s, "Exec=editor %F\nTerminal=true\n");
        system.addEntry(u"shell.desktop"_s, "Exec=bash\n");
        system.addEntry(u"shell2.desktop"_s, "Exec=/bin/bash\n");
        DesktopIndex index(system.places().desktop);
        index.refresh(0s);
        const auto path = program.startsWith(u'=') ? program.sliced(1) : system.path(program);
        const ProgramCall call{path, arguments.split(u' ', Qt::SkipEmptyParts), false};
        QTEST(idOf(index.byProgram(call)), "id");
    }

    void findsWindowClasses()
    {
        MadeSystem system;
        system.addEntry(u"org.example.Mail.desktop"_s, "Name=Mail\nStartupWMClass=thunder\n");
        system.addEntry(u"org.example.Draw.desktop"_s, "Name=Draw\n");
        system.addEntry(u"web-abc.desktop"_s, "Name=Page\nStartupWMClass=crx_abc\n");
        DesktopIndex index(system.places().desktop);
        index.refresh(0s);
        QCOMPARE(idOf(index.byWindowClass(u"x"_s, u"thunder"_s)), u"org.example.Mail"_s);
        QCOMPARE(idOf(index.byWindowClass(u"x"_s, u"Thunder"_s)), u"org.example.Mail"_s);
        QCOMPARE(idOf(index.byWindowClass(u"crx_abc"_s, u"Chromium"_s)), u"web-abc"_s);
        QCOMPARE(idOf(index.byWindowClass(u"draw"_s, u"Draw"_s)), u"org.example.Draw"_s);
        QCOMPARE(idOf(index.byWindowClass({}, u"ORG.EXAMPLE.DRAW"_s)), u"org.example.Draw"_s);
        QCOMPARE(idOf(index.byWindowClass({}, {})), QString());
    }

    void findsWrappedProgramsByName()
    {
        MadeSystem system;
        system.addProgram(u"bin/chromium"_s);
        system.addEntry(u"chromium.desktop"_s, "Exec=chromium %U\n");
        system.addEntry(u"own.desktop"_s, "Exec=/opt/own/main.py\n");
        DesktopIndex index(system.places().desktop);
        index.refresh(0s);
        QCOMPARE(idOf(index.byProgramName({u"/usr/lib/chromium/chromium"_s, {}, false})), u"chromium"_s);
        QCOMPARE(idOf(index.byProgramName({u"/home/me/main.py"_s, {}, true})), QString());
    }

    void readsAgainOnlyAfterAChange()
    {
        MadeSystem system;
        system.addEntry(u"foo.desktop"_s, "Name=Foo\n");
        const auto folder = system.path(u"data/applications"_s);
        age(folder, 100);
        DesktopIndex index(system.places().desktop);
        QVERIFY(index.refresh(0s));
        QVERIFY(!index.refresh(20s));
        system.addEntry(u"bar.desktop"_s, "Name=Bar\n");
        age(folder, 50);
        QVERIFY2(!index.refresh(25s), "it looks at most every ten seconds");
        QVERIFY(!index.byId(u"bar"_s));
        QVERIFY(index.refresh(31s));
        QVERIFY(index.byId(u"bar"_s));
    }

    void aFolderOfAnyDateIsReadOnce_data()
    {
        QTest::addColumn<qint64>("date"); // seconds since 1970
        const auto now = QDateTime::currentSecsSinceEpoch();
        QTest::newRow("tomorrow") << now + 86'400;
        QTest::newRow("the year 4000") << qint64(64'060'588'800);
        QTest::newRow("0, as some systems date all they install") << qint64(0);
        QTest::newRow("before 1970") << qint64(-86'400);
        QTest::newRow("a while ago") << now - 1000;
    }
    void aFolderOfAnyDateIsReadOnce()
    {
        QFETCH(qint64, date);
        MadeSystem system;
        system.addEntry(u"foo.desktop"_s, "Name=Foo\n");
        const auto folder = system.path(u"data/applications"_s);
        age(folder, QDateTime::currentSecsSinceEpoch() - date);
        DesktopIndex index(system.places().desktop);
        QVERIFY(index.refresh(0s));
        QVERIFY(index.byId(u"foo"_s));
        QVERIFY(!index.refresh(20s));
        system.addEntry(u"bar.desktop"_s, "Name=Bar\n");
        QVERIFY(index.refresh(40s));
        QVERIFY(index.byId(u"bar"_s));
    }

    void anEntryThatCouldNotBeOpenedIsReadLater()
    {
        MadeSystem system;
        system.addEntry(u"foo.desktop"_s, "Name=Foo\n");
        age(system.path(u"data/applications"_s), 100);
        DesktopIndex index(system.places().desktop);
        {
            const NoMoreFiles full;
            index.refresh(0s);
            QVERIFY(!index.byId(u"foo"_s));
        }
        QVERIFY(index.refresh(20s));
        QVERIFY(index.byId(u"foo"_s));
        QVERIFY(!index.refresh(40s));
    }

    void aFolderIsLookedAtToItsLimit()
    {
        MadeSystem hostile;
        MadeSystem system;
        hostile.write(u"data/applications/0.desktop"_s, "[Desktop Entry]\nType=Link\nURL=x\n");
        const auto first = QFile::encodeName(hostile.path(u"data/applications/0.desktop"_s));
        for (int number = 1; number < 11'000; ++number) {
            const auto name = hostile.path(u"data/applications/%1.desktop"_s.arg(number));
            QCOMPARE(link(first.constData(), QFile::encodeName(name).constData()), 0);
        }
        system.addEntry(u"good.desktop"_s, "Name=Good\n");
        auto places = system.places().desktop;
        places.dataFolders.prepend(hostile.path(u"data"_s));
        DesktopIndex index(places);
        const Openings openings(hostile.path(u"data/applications"_s));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"more than 10000 names"_s));
        index.refresh(0s);
        QCOMPARE(openings.count(), 10'000);
        QVERIFY2(index.byId(u"good"_s), "the next folder has a limit of its own");
    }

    void endsWithHostileFolders()
    {
        MadeSystem system;
        system.addEntry(u"good.desktop"_s, "Name=Good\nExec=good\n");
        system.write(u"data/applications/empty.desktop"_s, {});
        system.write(u"data/applications/noise.desktop"_s, QByteArray(5000, '\xff') + QByteArray(10, '\0'));
        system.addEntry(u"huge.desktop"_s,
                        "Name=Huge\n" + QByteArray(8 * 1024 * 1024, '#') + "\nStartupWMClass=late\n");
        QDir().mkpath(system.path(u"data/applications/folder.desktop"_s));
        QFile::link(system.path(u"data/applications"_s), system.path(u"data/applications/circle"_s));
        QFile::link(system.path(u"nowhere"_s), system.path(u"data/applications/dangling.desktop"_s));
        QFile::link(system.path(u"data/applications/self.desktop"_s),
                    system.path(u"data/applications/self.desktop"_s));
        QCOMPARE(
            mkfifo(QFile::encodeName(system.path(u"data/applications/pipe.desktop"_s)).constData(), 0600), 0);
        DesktopIndex index(system.places().desktop);
        index.refresh(0s);
        QVERIFY(index.byId(u"good"_s));
        QVERIFY(!index.byId(u"circle-good"_s));
        QCOMPARE(index.byId(u"huge"_s)->startupWmClass, QString());
        QVERIFY(!index.byId(u"noise"_s) && !index.byId(u"dangling"_s) && !index.byId(u"pipe"_s));
    }
};

QUORVEL_TEST(TestDesktopIndex, QCoreApplication)
#include "tst_desktopIndex.moc"
