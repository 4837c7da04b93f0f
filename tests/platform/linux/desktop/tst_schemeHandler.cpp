#include "FailingFileCalls.h"
#include "schemeHandler.h"
#include "suite.h"
#include "testFiles.h"

#include <memory>

using namespace Qt::StringLiterals;
using namespace TestFiles;

namespace {

const QByteArray association = "x-scheme-handler/quorvel=quorvel-url-handler.desktop;quorvel.desktop;\n";

QStringList warnings;
QtMessageHandler earlier = nullptr;

void keepWarning(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (qstrcmp(context.category, "quorvel.desktop.schemehandler") != 0)
        earlier(type, context, text);
    else
        warnings << text;
}

} // namespace

class tst_schemeHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { earlier = qInstallMessageHandler(keepWarning); }
    void cleanupTestCase() { qInstallMessageHandler(earlier); }
    void init()
    {
        warnings.clear();
        m_home = std::make_unique<QTemporaryDir>();
    }

    void theFirstStartWritesEntryAndAssociation()
    {
        QCOMPARE(start(), QStringList({entry(), list()}));
        QCOMPARE(content(entry()),
                 "[Desktop Entry]\nType=Application\nName=Quorvel\nExec=" + program().toUtf8() +
                     " %u\nNoDisplay=true\nTerminal=false\nStartupNotify=true\n"
                     "MimeType=x-scheme-handler/quorvel;\n"
                     "X-Quorvel-WrittenAtStart=true\n");
        QCOMPARE(content(list()), "[Default Applications]\n" + association);
        QCOMPARE(warnings, QStringList());
    }

    void laterStartsWriteNothing()
    {
        start();
        FailingFileCalls calls;
        QCOMPARE(registerSchemeHandler(calls, places()), QStringList());
        QVERIFY(!calls.steps.contains("rename"));
        QVERIFY(!calls.steps.contains("write"));
        QCOMPARE(warnings, QStringList());
    }

    void aMovedProgramBringsItsEntryUpToDate()
    {
        start();
        auto moved = places();
        FailingFileCalls calls;
        moved.program = u"/other place/quorvel"_s;
        QCOMPARE(registerSchemeHandler(calls, moved), QStringList{entry()});
        QVERIFY(content(entry()).contains("\nExec=\"/other place/quorvel\" %u\n"));
        QCOMPARE(content(list()), "[Default Applications]\n" + association);
    }

    void anEntryThatIsNotOursIsLeft()
    {
        make(entry(), "[Desktop Entry]\nType=Application\nExec=mine %u\n");
        start();
        QCOMPARE(content(entry()), QByteArray("[Desktop Entry]\nType=Application\nExec=mine %u\n"));
        QCOMPARE(warnings.size(), 1);
    }

    void aPackageMakesOursUnnecessary_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::newRow("for all users") << u"usr"_s;
        QTest::newRow("for this user") << u"data"_s;
    }
    void aPackageMakesOursUnnecessary()
    {
        QFETCH(QString, folder);
        start();
        make(path(folder + u"/applications/quorvel.desktop"_s), packaged());
        QCOMPARE(start(), QStringList{entry()});
        QVERIFY(!QFileInfo::exists(entry()));
        QCOMPARE(start(), QStringList());
        QCOMPARE(content(list()), "[Default Applications]\n" + association); // which names the package's too
    }

    void aPackageIsAssociatedWhereNoDatabaseIs()
    {
        make(path(u"usr/applications/quorvel.desktop"_s), packaged());
        QCOMPARE(start(), QStringList{list()});
        QCOMPARE(content(list()), "[Default Applications]\n" + association);
    }

    void whatIsNoPackageOfOurs_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("another type") << packaged().replace("handler/quorvel", "handler/other");
        QTest::newRow("hidden") << packaged() + "Hidden=true\n";
        QTest::newRow("no program") << packaged().replace("Exec=", "Exec=/not/there/");
        QTest::newRow("a cut file") << packaged().left(20);
        QTest::newRow("empty") << QByteArray();
    }
    void whatIsNoPackageOfOurs()
    {
        QFETCH(QByteArray, bytes);
        make(path(u"usr/applications/quorvel.desktop"_s), bytes);
        QCOMPARE(start(), QStringList({entry(), list()}));
    }

    void anAssociationOfTheUserStays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray line = "x-scheme-handler/quorvel=other.desktop\n";
        QTest::newRow("default") << u"config/mimeapps.list"_s << "[Default Applications]\n" + line;
        QTest::newRow("added") << u"config/mimeapps.list"_s << "[Added Associations]\n" + line;
        QTest::newRow("removed") << u"config/mimeapps.list"_s << "[Removed Associations]\n" + line;
        QTest::newRow("of a desktop") << u"config/kde-mimeapps.list"_s << "[Default Applications]\n" + line;
        QTest::newRow("of the system") << u"etc/mimeapps.list"_s << "[Default Applications]\n" + line;
        QTest::newRow("among data") << u"data/applications/mimeapps.list"_s
                                    << "[Default Applications]\n" + line;
        QTest::newRow("in a database") << u"usr/applications/mimeinfo.cache"_s << "[MIME Cache]\n" + line;
    }
    void anAssociationOfTheUserStays()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        make(path(name), bytes);
        QCOMPARE(start(), QStringList{entry()});
        QCOMPARE(content(path(name)), bytes);
    }

    void otherBytesOfTheListStay()
    {
        make(list(), "# mine\r\n[Default Applications]\ntext/html=b.desktop\n\n[Other \xff]\nx");
        QCOMPARE(start(), QStringList({entry(), list()}));
        QCOMPARE(content(list()), "# mine\r\n[Default Applications]\n" + association +
                                      "text/html=b.desktop\n\n[Other \xff]\nx");
    }

    void aLinkedListStaysALink()
    {
        make(path(u"dotfiles/list"_s), "[Default Applications]\ntext/html=b.desktop\n");
        QVERIFY(QDir().mkpath(path(u"config"_s)));
        symbolicLink(path(u"dotfiles/list"_s), list());
        start();
        QVERIFY(QFileInfo(list()).isSymLink());
        QCOMPARE(content(path(u"dotfiles/list"_s)),
                 "[Default Applications]\n" + association + "text/html=b.desktop\n");
    }

    void aListThatCannotBeReadIsLeft()
    {
        QVERIFY(QDir().mkpath(list() + u"/inside"_s));
        QCOMPARE(start(), QStringList{entry()});
        QVERIFY(QFileInfo(list() + u"/inside"_s).isDir());
        QVERIFY(!warnings.isEmpty());
    }

    void noStepThatFailsLosesTheList()
    {
        const QByteArray before = "[Default Applications]\ntext/html=b.desktop\n";
        const auto after = "[Default Applications]\n" + association + "text/html=b.desktop\n";
        int kept = 0;
        for (int step = 0;; ++step) {
            make(list(), before);
            QFile::remove(entry());
            FailingFileCalls calls;
            calls.failingStep = step;
            const auto changed = registerSchemeHandler(calls, places());
            if (calls.steps.size() <= step)
                break;
            const auto now = content(list());
            QVERIFY2(now == before || now == after, now.constData());
            QVERIFY(!changed.contains(list()) || now == after);
            kept += now == before;
        }
        QVERIFY2(kept >= 6, qPrintable(QString::number(kept)));
        QVERIFY(!warnings.isEmpty());
    }

    void ownPlaces()
    {
        qputenv("XDG_DATA_HOME", "relative");
        qputenv("XDG_CONFIG_HOME", "/some/where/");
        qputenv("XDG_DATA_DIRS", "");
        qputenv("XDG_CONFIG_DIRS", "/a/:no:/b");
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        const auto own = schemeHandlerPlaces(u"/bin/quorvel"_s);
        QCOMPARE(own.program, u"/bin/quorvel"_s);
        QCOMPARE(own.dataHome, QDir::homePath() + u"/.local/share"_s);
        QCOMPARE(own.config, u"/some/where"_s);
        QCOMPARE(own.dataFolders, QStringList({u"/usr/local/share"_s, u"/usr/share"_s}));
        QCOMPARE(own.configFolders, QStringList({u"/a"_s, u"/b"_s}));
        QCOMPARE(own.desktops, QStringList({u"ubuntu"_s, u"gnome"_s}));
    }

private:
    QString path(const QString &name) const { return m_home->filePath(name); }
    QString program() const { return u"/opt/quorvel/bin/quorvel"_s; }
    QString entry() const { return path(u"data/applications/quorvel-url-handler.desktop"_s); }
    QString list() const { return path(u"config/mimeapps.list"_s); }
    SchemeHandlerPlaces places() const
    {
        return {program(),         path(u"data"_s),  {path(u"local"_s), path(u"usr"_s)},
                path(u"config"_s), {path(u"etc"_s)}, {u"kde"_s}};
    }
    QStringList start() const
    {
        FailingFileCalls calls; // none fails, and no disk is waited for
        return registerSchemeHandler(calls, places());
    }
    static void make(const QString &path, const QByteArray &bytes)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        put(path, bytes);
    }
    /// What packages install, but for a program that is everywhere.
    static QByteArray packaged()
    {
        return content(QStringLiteral(PACKAGED_ENTRY)).replace("Exec=quorvel", "Exec=sh");
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

QUORVEL_TEST(tst_schemeHandler, QCoreApplication)
#include "tst_schemeHandler.moc"
