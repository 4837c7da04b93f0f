#include "BackendStage.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestNetworkBackendRedirects : public QObject
{
    Q_OBJECT

    BackendStage m_stage;

    QByteArray origin(const QByteArray &host)
    {
        return "http://" + host + ':' + QByteArray::number(m_stage.server.port());
    }
    static QString leadingTo(const QByteArray &location, int status = 302)
    {
        return answerPath(status, "elsewhere", {"Location: " + location});
    }
    static QByteArray goal() { return "/api" + answerPath(200, "{\"ok\":true}").toLatin1(); }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_stage.server.start()); }
    void init()
    {
        m_stage.reset();
        m_stage.setToken(u"abc"_s);
    }

    void aPostIsLedOn_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<bool>("isStillAPost");
        QTest::addColumn<bool>("keepsTheToken");
        for (const int status : {301, 302, 303, 307, 308}) {
            QTest::addRow("%d here", status) << status << QByteArray("127.0.0.1") << (status > 303) << true;
            QTest::addRow("%d elsewhere", status)
                << status << QByteArray("localhost") << (status > 303) << false;
        }
    }
    void aPostIsLedOn()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, host);
        QFETCH(bool, isStillAPost);
        QFETCH(bool, keepsTheToken);
        const auto answer = m_stage.post(leadingTo(origin(host) + goal(), status), {{u"k"_s, 1}});
        QVERIFY(answer == BackendAnswer(QJsonObject{{u"ok"_s, true}}));
        const auto requests = m_stage.server.requests();
        QCOMPARE(requests.size(), 2);
        const auto &last = requests[1];
        QVERIFY(
            last.startsWith((isStillAPost ? "POST " : "GET ") + goal() + " HTTP/1.1\r\nHost: " + host + ':'));
        QCOMPARE(last.contains("\r\nAuthorization: Bearer abc\r\n"), keepsTheToken);
        QCOMPARE(last.contains("abc"), keepsTheToken);
        QCOMPARE(last.contains("\r\nContent-Type: application/json\r\n"), isStillAPost);
        QVERIFY(last.endsWith(isStillAPost ? "\r\n\r\n{\"k\":1}" : "\r\n\r\n"));
    }

    void aGetIsLedOnAsAGet()
    {
        for (const int status : {301, 302, 303, 307, 308}) {
            m_stage.server.forget();
            QVERIFY(m_stage.get(leadingTo(goal(), status)) == BackendAnswer(QJsonObject{{u"ok"_s, true}}));
            const auto last = m_stage.server.requests().value(1);
            QVERIFY(last.startsWith("GET " + goal()));
            QVERIFY(!last.contains("Authorization") && !last.contains("Content-"));
        }
    }

    void theTokenDoesNotComeBackFromElsewhere()
    {
        const auto back = "/api" + leadingTo(origin("127.0.0.1") + goal(), 307).toLatin1();
        m_stage.post(leadingTo(origin("localhost") + back, 307));
        const auto requests = m_stage.server.requests();
        QCOMPARE(requests.size(), 3);
        QVERIFY(requests[0].contains("Authorization"));
        QVERIFY(!requests[1].contains("Authorization"));
        QVERIFY(!requests[2].contains("Authorization"));
    }

    void aRedirectThatIsNotFollowedIsRefused_data()
    {
        QTest::addColumn<QByteArray>("location");
        for (const auto *location :
             {"file:///etc/hostname", "data:,{}", "ftp://127.0.0.1/", "http://", "http://[x"})
            QTest::newRow(location) << QByteArray(location);
    }
    void aRedirectThatIsNotFollowedIsRefused()
    {
        QFETCH(QByteArray, location);
        QVERIFY(m_stage.post(leadingTo(location)) == BackendAnswer(refused(u"elsewhere"_s)));
        QVERIFY(m_stage.get(leadingTo(location)) == BackendAnswer(refused(u"elsewhere"_s)));
        QCOMPARE(m_stage.server.requests().size(), 2);
    }

    void aCircleIsLeftAfterTwentyRounds()
    {
        QVERIFY(m_stage.post(u"/circle"_s) == BackendAnswer(refused(u"round again"_s)));
        QCOMPARE(m_stage.server.requests().size(), 21);
    }

    void aRedirectThatBreaksOffIsATransportFailure()
    {
        QVERIFY(transportCode(m_stage.post(leadingTo("/api/cut/in-body", 307))));
        QVERIFY(transportCode(m_stage.post(leadingTo("/api/cut/before-head", 307))));
        QCOMPARE(m_stage.server.requests().size(), 4);
    }
};

QUORVEL_TEST(TestNetworkBackendRedirects, QCoreApplication)
#include "tst_networkBackendRedirects.moc"
