#include "CompanionStage.h"
#include "FileHandle.h"
#include "NoMoreFiles.h"
#include "keptWarnings.h"
#include "suite.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray oneWindow = json("[{'id':1,'active':10,'tabs':[{'id':10,'url':'https://a.example/'}]}]");

} // namespace

class tst_companionServer : public QObject
{
    Q_OBJECT

    KeptWarnings m_warnings;

private Q_SLOTS:
    void initTestCase() { m_warnings.begin("quorvel.companion"); }
    void init() { m_warnings.texts().clear(); }

    void talksWithABrowser()
    {
        CompanionStage stage;
        const auto client = stage.connect();
        const auto welcome = nlohmann::json::parse(json("{'type':'welcome','protocol':1}"));
        QVERIFY(client->next() == welcome);
        QVERIFY(stage.server.browsers().isEmpty());
        client->tell(oneWindow, "1");
        QTRY_COMPARE(stage.server.browsers(), QStringList{u"Chromium"_s});
        const auto sources = stage.server.sources(u"Chromium"_s);
        QCOMPARE(sources.size(), std::size_t(1));
        QCOMPARE(sources[0].ledger->frontTab()->url, u"https://a.example/"_s);
        QVERIFY(stage.server.sources(u"Firefox"_s).empty());

        stage.server.close(sources[0].number, {{10, u"https://a.example/"_s}});
        const auto order =
            nlohmann::json::parse(json("{'type':'close','tabs':[{'id':10,'url':'https://a.example/'}]}"));
        QVERIFY(client->next() == order);
        client->socket().disconnectFromServer();
        QTRY_VERIFY(stage.server.browsers().isEmpty());
        stage.server.close(sources[0].number, {{10, u"https://a.example/"_s}}); // gone: passed over
        QVERIFY2(m_warnings.texts().isEmpty(), qPrintable(m_warnings.texts().join(u'\n')));
    }

    void takesFramesInAnyPieces()
    {
        CompanionStage stage;
        const auto client = stage.connect();
        client->hello();
        QByteArray tabs;
        for (int id = 0; id < 3000; ++id)
            tabs += json("{'id':") + QByteArray::number(id) + json(",'url':'https://example.org/") +
                    QByteArray(300, 'x') + json("'},");
        const auto windows =
            CompanionClient::frameOf(json("{'type':'windows','windows':[{'id':1,'active':null,'tabs':[") +
                                     tabs.chopped(1) + json("]}],'focused':null}"));
        QVERIFY(windows.size() > 900000); // far more than is read at a time
        client->sendBytes(windows.first(3));
        QTest::qWait(5);
        client->sendBytes(windows.sliced(3) + CompanionClient::frameOf(json("{'type':'gone','tab':0}")));
        QTRY_VERIFY(!stage.server.sources(u"Chromium"_s).empty());
        QTRY_COMPARE(stage.server.sources(u"Chromium"_s)[0].ledger->tabCount(), std::size_t(2999));
    }

    void readsWhichBrowserItIs_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QStringList>("browsers");
        QTest::newRow("chromium") << u"/usr/lib/chromium/chromium"_s << QStringList{u"Chromium"_s};
        QTest::newRow("upgraded") << u"/opt/google/chrome/chrome (deleted)"_s
                                  << QStringList{u"Google Chrome"_s};
        QTest::newRow("firefox") << u"/usr/lib/firefox-esr/firefox-esr"_s << QStringList{u"Firefox"_s};
        QTest::newRow("beta") << u"/opt/google/chrome-beta/chrome"_s << QStringList();
        QTest::newRow("something else") << u"/usr/bin/python3"_s << QStringList();
    }
    void readsWhichBrowserItIs()
    {
        QFETCH(QString, executable);
        CompanionStage stage;
        const auto client = stage.connect(executable.toUtf8().constData());
        client->tell(oneWindow);
        const auto known = stage.connectAndTell("/opt/opera/opera", oneWindow);
        QTRY_VERIFY(stage.server.browsers().contains(u"Opera"_s)); // so the first was heard, too
        auto browsers = stage.server.browsers();
        browsers.removeAll(u"Opera"_s);
        QTEST(browsers, "browsers");
        QVERIFY(!client->isClosed());
        QVERIFY(stage.server.sources(QString()).empty());
    }

    void breakingTheProtocolEndsTheConnection_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("says");
        const auto frame = &CompanionClient::frameOf;
        const auto hello = frame(json("{'type':'hello','protocol':1,'version':'1','privateWindows':true}"));
        QTest::newRow("empty frame") << QByteArray(4, '\0') << u"a frame"_s;
        QTest::newRow("frame too long") << QByteArray(4, '\xFF') << u"a frame"_s;
        QTest::newRow("no JSON") << frame("nonsense") << u"is not JSON"_s;
        QTest::newRow("no object") << frame("[]") << u"object"_s;
        QTest::newRow("a key too many")
            << frame(json("{'type':'gone','tab':1,'a':2}")) << u"a key too many"_s;
        QTest::newRow("broken after good") << hello + frame("nonsense") << u"is not JSON"_s;
        QTest::newRow("a tab twice")
            << hello + frame(json("{'type':'windows','windows':[{'id':1,'active':null,'tabs':["
                                  "{'id':1,'url':'secret'},{'id':1,'url':'secret'}]}],'focused':null}"))
            << u"one twice"_s;
        QTest::newRow("other protocol")
            << frame(json("{'type':'hello','protocol':2,'version':'1','privateWindows':true}"))
            << u"protocol 2"_s;
    }
    void breakingTheProtocolEndsTheConnection()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, says);
        CompanionStage stage;
        const auto client = stage.connect();
        const auto good = CompanionClient::frameOf(json("{'type':'focus','window':null}"));
        client->sendBytes(bytes + good + CompanionClient::frameOf("more nonsense"));
        QTRY_VERIFY(client->isClosed());
        QCOMPARE(m_warnings.texts().size(), 1);
        QVERIFY2(m_warnings.texts()[0].contains(says) && m_warnings.texts()[0].contains(u"Chromium"),
                 qPrintable(m_warnings.texts()[0]));
        QVERIFY(!m_warnings.texts()[0].contains(u"secret"));
    }

    void remembersWhoSpeaksAnotherProtocol()
    {
        CompanionStage stage;
        stage.connect()->hello(true, 2);
        QTRY_VERIFY(stage.server.speaksAnotherProtocol(u"Chromium"_s));
        QVERIFY(!stage.server.speaksAnotherProtocol(u"Firefox"_s));
        const auto updated = stage.connectAndTell(CompanionStage::chromium, oneWindow);
        QTRY_VERIFY(!stage.server.speaksAnotherProtocol(u"Chromium"_s));
    }

    void whatComesOutOfTurnIsPassedOver()
    {
        CompanionStage stage;
        const auto client = stage.connect();
        client->send(json("{'type':'windows','windows':[],'focused':null}"));
        client->send(json("{'type':'gone','tab':1}"));
        client->tell(oneWindow);
        QTRY_VERIFY(!stage.server.browsers().isEmpty());
        client->hello(); // the extension was started anew
        QTRY_VERIFY(stage.server.browsers().isEmpty());
        client->tell(oneWindow);
        QTRY_VERIFY(!stage.server.browsers().isEmpty());
        QVERIFY(m_warnings.texts().isEmpty());
    }

    void aSilentPeerIsDropped()
    {
        CompanionStage stage(50ms);
        const auto teller = stage.connectAndTell(CompanionStage::firefox, oneWindow);
        const auto silent = stage.connect();
        QTRY_VERIFY(silent->isClosed());
        QCOMPARE(m_warnings.texts().size(), 1);
        QVERIFY(!teller->isClosed());
    }

    void aConnectionThatCouldNotBeTakenIsNotTheLast()
    {
        CompanionStage stage(std::chrono::seconds(30), std::chrono::milliseconds(1));
        const auto teller = stage.connectAndTell(CompanionStage::firefox, oneWindow);
        const FileHandle late(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(stage.socketPath()).constData(),
                 sizeof address.sun_path);
        {
            const NoMoreFiles full;
            QCOMPARE(::connect(late.descriptor(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
            QTRY_VERIFY(!stage.server.listening());
        }
        QTRY_VERIFY(stage.server.listening());
        const auto next = stage.connect();
        QVERIFY(next->next()["type"] == "welcome");
        QVERIFY2(!teller->isClosed(), "those that were there stay");
        QVERIFY(m_warnings.texts().value(0).contains(u"cannot connect any more"_s));
    }

    void oneConnectionTooManyIsTurnedAway()
    {
        CompanionStage stage;
        std::vector<std::unique_ptr<CompanionClient>> clients;
        clients.push_back(stage.connect());
        while (clients.size() < CompanionServer::mostConnections) {
            clients.push_back(std::make_unique<CompanionClient>(stage.socketPath()));
            QCoreApplication::processEvents(); // the system lets only so many wait to be taken
        }
        {
            CompanionClient oneMore(stage.socketPath());
            QTRY_VERIFY(oneMore.isClosed());
            QCOMPARE(oneMore.socket().readAll(), QByteArray());
        }
        QCOMPARE(m_warnings.texts().size(), 1);
        clients.front()->tell(oneWindow);
        QTRY_COMPARE(stage.server.browsers(), QStringList{u"Chromium"_s});
        clients.pop_back(); // makes room
        QTest::qWait(20);
        clients.push_back(stage.connect());
        QVERIFY(clients.back()->next()["type"] == "welcome");
    }

    void aPeerThatDoesNotReadIsDropped()
    {
        CompanionStage stage;
        const auto teller = stage.connectAndTell(CompanionStage::firefox, oneWindow);
        stage.beRelayOf(QString::fromUtf8(CompanionStage::chromium));
        // A bare socket: Qt's would read into its buffer.
        const int bare = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{AF_UNIX, {}};
        qstrncpy(address.sun_path, QFile::encodeName(stage.socketPath()).constData(),
                 sizeof address.sun_path);
        QCOMPARE(::connect(bare, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        auto talk = CompanionClient::frameOf(
                        json("{'type':'hello','protocol':1,'version':'1','privateWindows':true}")) +
                    CompanionClient::frameOf(json("{'type':'windows','windows':[],'focused':null}"));
        QCOMPARE(::write(bare, talk.constData(), size_t(talk.size())), talk.size());
        QTRY_COMPARE(stage.server.sources(u"Chromium"_s).size(), std::size_t(1));
        const auto number = stage.server.sources(u"Chromium"_s)[0].number;
        const std::vector<CompanionTab> order(100, {1, QString(longestAddress, u'x')}); // 100 kB
        int orders = 0;
        for (; orders < 200 && m_warnings.texts().isEmpty(); ++orders) {
            stage.server.close(number, order);
            QCoreApplication::processEvents();
        }
        QVERIFY2(orders > 38 && orders < 60,
                 qPrintable(QString::number(orders))); // 4 MiB, and what the kernel takes
        QCOMPARE(m_warnings.texts().size(), 1);
        QVERIFY(m_warnings.texts()[0].contains(u"does not read"));
        QVERIFY(stage.server.sources(u"Chromium"_s).empty());
        QCOMPARE(stage.server.sources(u"Firefox"_s).size(), std::size_t(1));
        ::close(bare);
    }

    void aHundredHostilePeersCostALineEach()
    {
        CompanionStage stage;
        const auto good = stage.connectAndTell(CompanionStage::firefox, oneWindow);
        QTRY_COMPARE(stage.server.sources(u"Firefox"_s).size(), std::size_t(1));
        for (int wave = 1; wave <= 2; ++wave) {
            std::vector<std::unique_ptr<CompanionClient>> hostile;
            for (int number = 0; number < 50; ++number) {
                QCoreApplication::processEvents();
                hostile.push_back(std::make_unique<CompanionClient>(stage.socketPath()));
                hostile.back()->sendBytes(number % 2 ? QByteArray(5000, char(number))
                                                     : CompanionClient::frameOf("{}"));
            }
            QTRY_COMPARE(m_warnings.texts().size(), 50 * wave);
            for (const auto &client : hostile)
                QTRY_VERIFY(client->isClosed());
        }
        QCOMPARE(m_warnings.texts().size(), 100);
        good->send(json("{'type':'address','tab':10,'url':'b'}"));
        QTRY_COMPARE(stage.server.sources(u"Firefox"_s)[0].ledger->windows()[0].tabs[0].url, u"b"_s);
    }

    void anotherUserIsTurnedAway()
    {
        if (geteuid() != 0)
            QSKIP("only root can become another user");
        CompanionStage stage;
        const auto path = QFile::encodeName(stage.socketPath());
        // Doors that are never open like this, to reach the check behind them.
        QCOMPARE(::chmod(QFile::encodeName(QFileInfo(stage.socketPath()).path()).constData(), 0711), 0);
        QCOMPARE(::chmod(path.constData(), 0777), 0);
        const auto stranger = ::fork();
        if (stranger == 0) {
            constexpr uid_t nobody = 65534;
            sockaddr_un address{AF_UNIX, {}};
            qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
            const int bare = ::socket(AF_UNIX, SOCK_STREAM, 0);
            if (::setgid(nobody) != 0 || ::setuid(nobody) != 0)
                ::_exit(3);
            if (::connect(bare, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
                ::_exit(4);
            char byte;
            ::_exit(::read(bare, &byte, 1) > 0 ? 5 : 0); // the end, and no welcome
        }
        QTRY_COMPARE(m_warnings.texts().size(), 1);
        int status = -1;
        QCOMPARE(::waitpid(stranger, &status, 0), stranger);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QVERIFY(m_warnings.texts()[0].contains(u"another user"));
    }

    void replacesAStaleSocketAndTakesItsOwnAway()
    {
        QTemporaryDir folder;
        const auto path = folder.filePath(u"companion"_s);
        { // what a killed program leaves
            const int bare = ::socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address{AF_UNIX, {}};
            qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
            QCOMPARE(::bind(bare, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
            ::close(bare);
        }
        {
            CompanionServer server(QFile::encodeName(folder.path()));
            QVERIFY(server.listen().ok());
            struct stat status;
            QCOMPARE(::stat(QFile::encodeName(path).constData(), &status), 0);
            QCOMPARE(status.st_mode & 0077, mode_t(0));
            CompanionClient client(path);
            QVERIFY(client.next()["type"] == "welcome");
        }
        QVERIFY(!QFileInfo::exists(path));
    }

    void saysWhyItCannotListen()
    {
        CompanionServer server("/nowhere/at/all");
        const auto listening = server.listen();
        QVERIFY(!listening.ok() && !listening.reason().isEmpty());
        QVERIFY(!server.listening());
    }
};

QUORVEL_TEST(tst_companionServer, QCoreApplication)
#include "tst_companionServer.moc"
