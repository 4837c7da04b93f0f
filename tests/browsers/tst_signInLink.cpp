// The way back of a sign-in: an address of the scheme "quorvel" that the desktop, or a real browser, opens
// with the whole program, while it runs and while it does not. The token in it ends in one file and in no
// log.
#include "PointerAndKeys.h"
#include "RealBrowser.h"
#include "patience.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QString token = u"token-5f0c7a2e9b"_s;
const QString address =
    u"quorvel://auth?session="_s + token + u"&email=student%40example.org&provider=google"_s;
const QByteArray signedIn = "accessMode = \"account\"";

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qUtf8Printable(path));
}

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestSignInLink : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<BrowserStage> m_stage;
    std::unique_ptr<PointerAndKeys> m_hand;
    ProcessFamily m_program;
    ProcessFamily m_opener; ///< and a program that it has started

    QString path(const QString &name) const { return m_stage->path(name); }
    QByteArray preferences() const { return content(path(u"config/quorvel/preferences"_s)); }
    QString ownEntry() const { return path(u"data/applications/quorvel-url-handler.desktop"_s); }

    /// All that programs share, but for the entries that are installed on this machine.
    void makeSystemData() const
    {
        QDir().mkpath(path(u"share"_s));
        for (const auto &name : QDir(u"/usr/share"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            if (name != u"applications")
                QFile::link(u"/usr/share/"_s + name, path(u"share/"_s + name));
        }
    }

    bool windowIsInFront() const { return m_hand->front() == u"Quorvel"; }

    /// Presses the key that closes a window; whether it is gone. A window that just came may miss the key.
    bool windowCloses() const
    {
        if (windowIsInFront())
            m_hand->press(u"alt+F4"_s);
        return !m_hand->sees(u"Quorvel"_s);
    }

    void startProgram()
    {
        QVERIFY(m_program.start(QStringLiteral(QUORVEL_PROGRAM), {}, m_stage->environment(),
                                path(u"quorvel.log"_s)));
        TRY_VERIFY(windowIsInFront());
    }

    /// The program has been started, so the desktop knows it. It then stays with its window closed, or ends.
    void startOnce(bool staysRunning)
    {
        startProgram();
        TRY_VERIFY(QFile::exists(path(u"config/mimeapps.list"_s)));
        QVERIFY(!preferences().contains(signedIn));
        if (staysRunning)
            TRY_VERIFY(windowCloses());
        else
            QVERIFY(m_program.end(patience));
    }

    void expectSignedIn()
    {
        TRY_VERIFY(preferences().contains(token.toUtf8()));
        TRY_VERIFY(preferences().contains(signedIn));
        const auto stored = preferences();
        QVERIFY(stored.contains("serverSessionToken = \"" + token.toUtf8() + "\"\n"));
        QVERIFY(stored.contains("signedInEmail = \"student@example.org\"\n"));
        TRY_VERIFY(windowIsInFront());
    }

    /// The files of the stage in which the token stands. What a browser keeps of the addresses it has seen is
    /// its own affair.
    QStringList filesWithToken() const
    {
        QStringList found;
        QDirIterator files(path(u"."_s), QDir::Files | QDir::Hidden | QDir::System,
                           QDirIterator::Subdirectories);
        const auto browser = path(u"./chromium/"_s);
        while (files.hasNext()) {
            const auto file = files.next();
            if (!file.startsWith(browser) && QFileInfo(file).isFile() &&
                content(file).contains(token.toUtf8()))
                found << QDir(path(u"."_s)).relativeFilePath(file);
        }
        return found;
    }

    /// Asks all that `family` has started to end, the program among them.
    static void endAll(const ProcessFamily &family)
    {
        for (const auto process : family.members())
            ::kill(process, SIGTERM);
        TRY_VERIFY(family.members().empty());
    }

    void expectTokenInPreferencesAlone(const ProcessFamily &opener)
    {
        QCOMPARE(filesWithToken(), QStringList{u"config/quorvel/preferences"_s});
        endAll(opener);
        endAll(m_program);
        QCOMPARE(filesWithToken(), QStringList{u"config/quorvel/preferences"_s});
    }

private Q_SLOTS:
    void init()
    {
        m_stage = std::make_unique<BrowserStage>();
        QVERIFY2(m_stage->works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
        m_hand = std::make_unique<PointerAndKeys>(m_stage->desktop());
        makeSystemData();
        m_stage->setVariable(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
        m_stage->setVariable(u"QT_LOGGING_RULES"_s, u"quorvel.*=true"_s);
        m_stage->setVariable(u"XDG_DATA_DIRS"_s, path(u"share"_s));
        m_stage->setVariable(u"XDG_CONFIG_DIRS"_s, path(u"etc"_s));
    }

    void cleanup()
    {
        if (QTest::currentTestFailed() && m_stage)
            qWarning().noquote() << "The desktop:" << m_stage->desktop().report()
                                 << "\nThe program:" << content(path(u"quorvel.log"_s))
                                 << "\nThe opener:" << content(path(u"opener.log"_s));
        m_opener.kill();
        m_program.kill();
        m_hand.reset();
        m_stage.reset();
    }

    void theDesktopOpensTheAddress_data()
    {
        QTest::addColumn<QStringList>("opener");
        QTest::addColumn<bool>("running");
        const QStringList xdg{u"xdg-open"_s};
        const QStringList gio{u"gio"_s, u"open"_s};
        QTest::newRow("xdg-open, program running") << xdg << true;
        QTest::newRow("xdg-open, program closed") << xdg << false;
        QTest::newRow("GLib, program running") << gio << true;
        QTest::newRow("GLib, program closed") << gio << false;
    }
    void theDesktopOpensTheAddress()
    {
        QFETCH(QStringList, opener);
        QFETCH(bool, running);
        startOnce(running);
        QVERIFY(QFile::exists(ownEntry()));
        QVERIFY(!QFile::exists(path(u"data/applications/mimeinfo.cache"_s)));
        QVERIFY(m_opener.start(opener.first(), opener.mid(1) + QStringList{address}, m_stage->environment(),
                               path(u"opener.log"_s)));
        expectSignedIn();
        QCOMPARE(m_program.runs(), running);
        expectTokenInPreferencesAlone(m_opener);
    }

    void aPackageNeedsNoEntryOfOurs()
    {
        const QFileInfo program(QStringLiteral(QUORVEL_PROGRAM));
        m_stage->setVariable(u"PATH"_s, program.path() + u':' + qEnvironmentVariable("PATH"));
        writeFile(path(u"share/applications/quorvel.desktop"_s), content(QStringLiteral(PACKAGED_ENTRY)));
        startOnce(true);
        QVERIFY(!QFile::exists(ownEntry()));
        QVERIFY(
            m_opener.start(u"gio"_s, {u"open"_s, address}, m_stage->environment(), path(u"opener.log"_s)));
        expectSignedIn();
    }

    void aBrowserBringsTheUserBack_data()
    {
        QTest::addColumn<bool>("running");
        QTest::newRow("program running") << true;
        QTest::newRow("program closed") << false;
    }
    void aBrowserBringsTheUserBack()
    {
        QFETCH(bool, running);
        startOnce(running);
        // The answer to "always allow this page to open such links", as the profile remembers it.
        writeFile(path(u"chromium/Default/Preferences"_s),
                  "{\"protocol_handler\": {\"allowed_origin_protocol_pairs\": "
                  "{\"http://localhost\": {\"quorvel\": true}}}}");
        RealBrowser chromium(RealBrowser::Kind::Chromium, *m_stage, QStringLiteral(QUORVEL_EXTENSION),
                             QStringLiteral(QUORVEL_RELAY));
        QVERIFY(chromium.start({u"http://localhost/gate"_s}));
        TRY_VERIFY(m_stage->pages().asked(u"localhost/ready"_s) > 0);
        m_stage->pages().release(address);
        expectSignedIn();
        QCOMPARE(m_program.runs(), running);
        expectTokenInPreferencesAlone(chromium.processes());
    }

    void severalAddressesCountInTheirOrder()
    {
        startOnce(true);
        const QStringList arguments{u"quorvel://auth?session=first&email=first%40example.org"_s,
                                    u"QUORVEL://auth?session=capitals"_s, u"https://auth/?session=web"_s,
                                    address, u"quorvel://other?session=last"_s};
        QVERIFY(m_opener.start(QStringLiteral(QUORVEL_PROGRAM), arguments, m_stage->environment(),
                               path(u"opener.log"_s)));
        expectSignedIn();
    }

    void hostileAddressesOnlyFail_data()
    {
        QTest::addColumn<QStringList>("arguments");
        const QString longText(120'000, u'x');
        QTest::newRow("another host") << QStringList{u"quorvel://evil?session=1"_s};
        QTest::newRow("another case") << QStringList{u"Quorvel://auth?session=1"_s};
        QTest::newRow("long") << QStringList{u"quorvel://auth?session="_s + longText};
        QTest::newRow("megabytes") << QStringList(12, u"quorvel://auth?x="_s + longText);
        QTest::newRow("many") << QStringList(20'000, u"quorvel://auth?session=1"_s);
        QTest::newRow("many that fit") << QStringList(3'000, u"quorvel://evil"_s);
        QTest::newRow("control characters") << QStringList{u"quorvel://\x1b[2J\n\r\t\x7f"_s};
    }
    void hostileAddressesOnlyFail()
    {
        QFETCH(QStringList, arguments);
        startOnce(true);
        QVERIFY(m_opener.start(QStringLiteral(QUORVEL_PROGRAM), arguments, m_stage->environment(),
                               path(u"opener.log"_s)));
        QVERIFY(m_opener.waitForEnd(patience));
        TRY_VERIFY(windowIsInFront());
        QVERIFY(m_program.runs());
        QVERIFY(!preferences().contains(signedIn));
        QVERIFY(content(path(u"opener.log"_s)).isEmpty());
        QVERIFY(m_program.end(patience));
    }
};

QTEST_GUILESS_MAIN(TestSignInLink)
#include "tst_signInLink.moc"
