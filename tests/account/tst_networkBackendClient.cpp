#include "BackendStage.h"
#include "suite.h"

#include <QFile>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

const QJsonObject fine{{u"ok"_s, true}};

BackendTimeouts shortTimeouts()
{
    return {std::chrono::milliseconds(150), std::chrono::milliseconds(150)};
}

/// An answer for whoever reads why a test failed.
QString said(const BackendAnswer &answer)
{
    const auto *error = std::get_if<BackendError>(&answer);
    return error ? u"%1 %2 %3"_s.arg(error->domain).arg(error->code).arg(error->description) : u"an object"_s;
}

} // namespace

class TestNetworkBackendClient : public QObject
{
    Q_OBJECT

    BackendStage m_stage;

    QByteArray received(const QByteArray &line, const QByteArray &headers, const QByteArray &body,
                        const QByteArray &language = "en")
    {
        return line + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_stage.server.port()) +
               "\r\nUser-Agent: Quorvel/0.1.0\r\nAccept-Language: " + language + "\r\nConnection: close\r\n" +
               headers + "Accept-Encoding: " + acceptedEncodings() + "\r\n\r\n" + body;
    }
    /// Depends on what the system's Qt can unpack.
    QByteArray acceptedEncodings()
    {
        const auto first = m_stage.server.requests().value(0);
        const auto start = first.indexOf("Accept-Encoding: ") + 17;
        return first.mid(start, first.indexOf("\r\n", start) - start);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_stage.server.start()); }
    void init() { m_stage.reset(); }

    void aPostWithATokenOverTheWire()
    {
        m_stage.setToken(u"abc.DEF-123_~+/="_s);
        QVERIFY(m_stage.post(answerPath(200, "{\"ok\":true}"),
                             {{u"email"_s, u"ä@b.example"_s}, {u"n"_s, 1}}) == BackendAnswer(fine));
        QCOMPARE(m_stage.server.requests(),
                 QList{received("POST /api/answer/200/7b226f6b223a747275657d",
                                "Content-Type: application/json\r\nContent-Length: 30\r\n"
                                "Authorization: Bearer abc.DEF-123_~+/=\r\n",
                                "{\"email\":\"ä@b.example\",\"n\":1}")});
        QVERIFY(acceptedEncodings().contains("gzip"));
    }

    void aPostWithoutATokenOverTheWire()
    {
        m_stage.post(answerPath(200, "{}"));
        QCOMPARE(m_stage.server.requests(),
                 QList{received("POST /api/answer/200/7b7d",
                                "Content-Type: application/json\r\nContent-Length: 2\r\n", "{}")});
    }

    void refusalsAreAskedForInTheLanguageOfTheProgram()
    {
        for (const auto &stored : {u"ru"_s, u"en"_s, u"de"_s}) { // unknown: the window is English
            m_stage.preferences.values[PreferenceKeys::language()] = stored;
            m_stage.get(answerPath(200, "{}"));
        }
        const QByteArray line = "GET /api/answer/200/7b7d";
        QCOMPARE(m_stage.server.requests(),
                 (QList{received(line, "", "", "ru"), received(line, "", ""), received(line, "", "")}));
    }

    void anEmptyTokenIsNone()
    {
        m_stage.setToken(u""_s);
        m_stage.post(answerPath(200, "{}"));
        QCOMPARE(m_stage.server.requests(),
                 QList{received("POST /api/answer/200/7b7d",
                                "Content-Type: application/json\r\nContent-Length: 2\r\n", "{}")});
    }

    void aGetNeverHasTheToken()
    {
        m_stage.setToken(u"abc"_s);
        m_stage.get(answerPath(200, "{}") + u"?a=%20b"_s);
        QCOMPARE(m_stage.server.requests(), QList{received("GET /api/answer/200/7b7d?a=%20b", "", "")});
    }

    void theTokenIsReadAfreshForEachPost()
    {
        m_stage.setToken(u"first"_s);
        m_stage.post(answerPath(200, "{}"));
        m_stage.setToken(u"second"_s);
        m_stage.post(answerPath(200, "{}"));
        m_stage.preferences.values.erase(PreferenceKeys::serverSessionToken());
        m_stage.post(answerPath(200, "{}"));
        const auto requests = m_stage.server.requests();
        QCOMPARE(requests.size(), 3);
        QVERIFY(requests[0].contains("\r\nAuthorization: Bearer first\r\n"));
        QVERIFY(requests[1].contains("\r\nAuthorization: Bearer second\r\n"));
        QVERIFY(!requests[2].contains("Authorization"));
    }

    void aTokenThatNoHeaderCanHoldIsNotSent_data()
    {
        QTest::addColumn<QString>("token");
        QTest::newRow("line end") << u"abc\r\nX-Injected: 1"_s;
        QTest::newRow("CR") << u"abc\rX-Injected: 1"_s;
        QTest::newRow("LF") << u"abc\nX-Injected: 1"_s;
        QTest::newRow("LF at the end") << u"abc\n"_s;
        QTest::newRow("zero") << u"abc\0X-Injected"_s;
        QTest::newRow("delete") << u"abc\u007f"_s;
        QTest::newRow("beyond Latin-1") << u"abcд"_s;
        QTest::newRow("becomes LF when cut to a byte") << u"abc\u010aX-Injected: 1"_s;
    }
    void aTokenThatNoHeaderCanHoldIsNotSent()
    {
        QFETCH(QString, token);
        m_stage.setToken(token);
        QTest::ignoreMessage(QtWarningMsg,
                             "the stored session token cannot stand in a header, so it is not sent");
        QVERIFY(m_stage.post(answerPath(200, "{\"ok\":true}")) == BackendAnswer(fine));
        QCOMPARE(m_stage.server.requests(),
                 QList{received("POST /api/answer/200/7b226f6b223a747275657d",
                                "Content-Type: application/json\r\nContent-Length: 2\r\n", "{}")});
    }

    void nothingIsKeptFromOneCallForTheNext()
    {
        const auto path =
            answerPath(200, "{}", {"Set-Cookie: a=b; Path=/", "ETag: \"1\"", "Cache-Control: max-age=999"});
        m_stage.get(path);
        m_stage.get(path);
        const auto requests = m_stage.server.requests();
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests[1], requests[0]);
    }

    void theAnswerIsJudgedByItsStatus_data()
    {
        QTest::addColumn<int>("status");
        for (const int status :
             {200, 201, 202, 203, 206, 299, 300, 304, 305, 306, 310, 400, 401, 402, 403, 404, 405,
              407, 408, 409, 410, 418, 422, 429, 499, 500, 501, 502, 503, 504, 599, 600, 999})
            QTest::addRow("%d", status) << status;
    }
    void theAnswerIsJudgedByItsStatus()
    {
        QFETCH(int, status);
        const QByteArray body = status == 304 ? "" : "{\"ok\":true}"; // such an answer has no body
        const auto expected =
            status < 300 ? BackendAnswer(fine) : BackendAnswer(refused(QString::fromUtf8(body)));
        QVERIFY(m_stage.get(answerPath(status, body)) == expected);
        QVERIFY(m_stage.post(answerPath(status, body)) == expected);
        QCOMPARE(m_stage.server.requests().size(), 2);
    }

    void aRefusalSaysTheBody_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("description");
        QTest::newRow("text") << QByteArray("Неверный код\n") << u"Неверный код\n"_s;
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("no UTF-8") << QByteArray("\xFF\xFE") << u"Backend error"_s;
        QTest::newRow("long") << QByteArray(1'000'000, 'x') << QString(1'000'000, u'x');
    }
    void aRefusalSaysTheBody()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, description);
        const auto path = body.size() < 1000 ? answerPath(500, body) : u"/repeated/500/1000000/78"_s;
        QVERIFY(m_stage.post(path) == BackendAnswer(refused(description)));
        QVERIFY(m_stage.get(path) == BackendAnswer(refused(description)));
    }

    void aQuestionForAPasswordIsARefusal_data()
    {
        QTest::addColumn<QByteArray>("question");
        for (const auto *question :
             {"Basic realm=\"x\"", "Digest realm=\"x\", nonce=\"y\"", "Bearer", "Negotiate", "NTLM"})
            QTest::newRow(question) << "WWW-Authenticate: " + QByteArray(question);
    }
    void aQuestionForAPasswordIsARefusal()
    {
        QFETCH(QByteArray, question);
        m_stage.setToken(u"abc"_s);
        QVERIFY(m_stage.post(answerPath(401, "sign in", {question})) == BackendAnswer(refused(u"sign in"_s)));
        QCOMPARE(m_stage.server.requests().size(), 1);
    }

    void anEmptyBodyIsNoJson()
    {
        for (const int status : {200, 204}) {
            const auto answer = m_stage.post(answerPath(status, ""));
            QVERIFY(answer == decodeJSONObject(""));
            QCOMPARE(std::get<BackendError>(answer).domain, u"QJsonParseError"_s);
        }
    }

    void aBodyIsReadAsItComes_data()
    {
        QTest::addColumn<QString>("path");
        const QByteArray object = "{\"ok\":true}";
        QTest::newRow("picture") << answerPath(200, object, {"Content-Type: image/png"});
        QTest::newRow("other characters")
            << answerPath(200, object, {"Content-Type: application/json; charset=utf-16"});
        QTest::newRow("chunks") << u"/chunked"_s;
        QTest::newRow("until it closes") << u"/until-close"_s;
        QTest::newRow("after 100") << u"/after-continue"_s;
        QTest::newRow("packed") << u"/packed/200/"_s + hex(object);
    }
    void aBodyIsReadAsItComes()
    {
        QFETCH(QString, path);
        QVERIFY(m_stage.get(path) == BackendAnswer(fine));
        QVERIFY(m_stage.post(path) == BackendAnswer(fine));
    }

    void aBodyThatIsNoObjectFails()
    {
        for (const auto *body : {"[]", "null", "5", "hello", "{\"a\":"})
            QVERIFY(m_stage.post(answerPath(200, body)) == decodeJSONObject(body));
    }

    void aPackedRefusalSaysWhatWasPacked()
    {
        QVERIFY(m_stage.post(u"/packed/500/"_s + hex("no")) == BackendAnswer(refused(u"no"_s)));
    }

    void aBrokenPackIsATransportFailure()
    {
        QCOMPARE(transportCode(m_stage.post(u"/broken-pack/200"_s)), int(QNetworkReply::UnknownContentError));
    }

    void aConnectionThatBreaksIsATransportFailure_data()
    {
        QTest::addColumn<QString>("path");
        for (const auto *where : {"before-head", "in-head", "after-head", "in-body", "in-refusal"})
            QTest::newRow(where) << u"/cut/"_s + QString::fromLatin1(where);
        QTest::newRow("reset") << u"/reset"_s;
        QTest::newRow("no HTTP") << u"/garbage"_s;
    }
    void aConnectionThatBreaksIsATransportFailure()
    {
        QFETCH(QString, path);
        m_stage.setToken(u"abc"_s);
        const BackendError closed{u"QNetworkReply"_s, QNetworkReply::RemoteHostClosedError,
                                  u"Connection closed"_s};
        QVERIFY(m_stage.get(path) == BackendAnswer(closed));
        m_stage.server.forget();
        const auto answer = m_stage.post(path);
        QVERIFY2(answer == BackendAnswer(closed), qPrintable(said(answer)));
        m_stage.post(answerPath(200, "{}"));           // whatever came before this has come
        QCOMPARE(m_stage.server.requests().size(), 2); // what is posted is posted once
    }

    void chunksThatBreakOffAreNoObject()
    {
        // Qt can take this for the end, but half an object is none.
        for (const auto &path : {u"/cut/in-chunk"_s, u"/cut/after-chunk"_s}) {
            QVERIFY(std::holds_alternative<BackendError>(m_stage.get(path)));
            QVERIFY(std::holds_alternative<BackendError>(m_stage.post(path)));
        }
    }

    void silenceIsATransportFailure_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("no answer") << u"/hang"_s;
        QTest::newRow("half an answer") << u"/stall"_s;
    }
    void silenceIsATransportFailure()
    {
        QFETCH(QString, path);
        m_stage.renew(shortTimeouts());
        QCOMPARE(transportCode(m_stage.get(path)), int(QNetworkReply::OperationCanceledError));
        QCOMPARE(transportCode(m_stage.post(path)), int(QNetworkReply::OperationCanceledError));
        TRY_COMPARE(m_stage.server.gone(), 2);
        QCOMPARE(m_stage.server.requests().size(), 2);
    }

    void eachKindOfCallHasItsOwnTimeout()
    {
        m_stage.renew({.post = std::chrono::milliseconds(150), .get = std::chrono::milliseconds(patience)});
        QCOMPARE(transportCode(m_stage.post(u"/hang"_s)), int(QNetworkReply::OperationCanceledError));
        m_stage.renew({.post = std::chrono::milliseconds(patience), .get = std::chrono::milliseconds(150)});
        QCOMPARE(transportCode(m_stage.get(u"/hang"_s)), int(QNetworkReply::OperationCanceledError));
        QCOMPARE(BackendTimeouts().post, std::chrono::seconds(60));
    }

    void aSlowAnswerIsWaitedForWhileItComes()
    {
        const auto enough = std::chrono::milliseconds(1000);
        m_stage.renew({enough, enough});
        QVERIFY(m_stage.get(u"/drip/75"_s) == BackendAnswer(fine)); // twenty times 75 ms
    }

    void anAnswerThatNeverEndsIsGivenUp()
    {
        const auto path = u"/drip/75"_s; // a byte at a time
        const auto enough = std::chrono::milliseconds(patience);
        m_stage.renew({.post = enough, .get = enough, .whole = std::chrono::milliseconds(600)});
        for (const auto &answer : {m_stage.get(path), m_stage.post(path)}) {
            QCOMPARE(transportCode(answer), int(QNetworkReply::OperationCanceledError));
            QCOMPARE(std::get<BackendError>(answer).description, u"The answer took too long."_s);
        }
        QVERIFY2(BackendTimeouts().whole > BackendTimeouts().post, "a slow answer that comes is waited for");
    }

    void aRefusedPortIsATransportFailure()
    {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const auto port = closed.serverPort();
        closed.close();
        m_stage.setBase(u"http://127.0.0.1:%1"_s.arg(port));
        m_stage.setToken(u"geheim"_s);
        const auto answer = m_stage.post(u"/x"_s);
        QCOMPARE(transportCode(answer), int(QNetworkReply::ConnectionRefusedError));
        QVERIFY(!std::get<BackendError>(answer).description.contains(u"geheim"_s));
    }

    void anAddressOfNoServerIsATransportFailure()
    {
        m_stage.setBase(QString());
        QVERIFY(transportCode(m_stage.get(u"/x"_s)));
        QVERIFY(transportCode(m_stage.post(u"/x"_s)));
        m_stage.setBase(u"gopher://127.0.0.1"_s);
        QVERIFY(transportCode(m_stage.get(u"/x"_s)));
    }

    void whatComesByNoHttpIsRefused()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"answer"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"ok\":true}");
        file.close();
        m_stage.setBase(QUrl::fromLocalFile(folder.path()).toString());
        QVERIFY(m_stage.get(u"/answer"_s) == BackendAnswer(refused(u"{\"ok\":true}"_s)));
    }

    void anAnswerMayHaveEightMebibytes_data()
    {
        QTest::addColumn<QString>("framing");
        for (const auto *framing : {"length", "chunked", "close"})
            QTest::newRow(framing) << QString::fromLatin1(framing);
    }
    void anAnswerMayHaveEightMebibytes()
    {
        QFETCH(QString, framing);
        const auto path = u"/huge/%1/"_s + framing;
        const auto largest = m_stage.get(path.arg(8 * 1024 * 1024));
        QVERIFY(std::holds_alternative<QJsonObject>(largest));
        for (const int size : {8 * 1024 * 1024 + 1, 9 * 1024 * 1024}) {
            QVERIFY(m_stage.get(path.arg(size)) ==
                    BackendAnswer(BackendError{u"QNetworkReply"_s, QNetworkReply::OperationCanceledError,
                                               u"The answer is larger than 8 MiB."_s}));
        }
    }

    void anEndlessAnswerIsBrokenOff()
    {
        QCOMPARE(transportCode(m_stage.post(u"/huge/20/endless"_s)),
                 int(QNetworkReply::OperationCanceledError));
        TRY_COMPARE(m_stage.server.gone(), 1);
    }

    void aSmallPackOfMuchIsTooLarge()
    {
        QVERIFY(std::holds_alternative<QJsonObject>(m_stage.get(u"/bomb/7"_s)));
        for (const auto *size : {"9", "20"})
            QVERIFY(transportCode(m_stage.get(u"/bomb/"_s + QString::fromLatin1(size))));
    }

    void callsEndInTheOrderOfTheirAnswers()
    {
        QList<int> ended;
        m_stage.client->postJSON(u"/held/one/"_s + hex("{}"), {},
                                 [&](const BackendAnswer &) { ended.append(1); });
        m_stage.client->postJSON(u"/held/two/"_s + hex("{}"), {},
                                 [&](const BackendAnswer &) { ended.append(2); });
        TRY_COMPARE(m_stage.server.requests().size(), 2);
        m_stage.server.release("two");
        TRY_COMPARE(ended, QList{2});
        m_stage.server.release("one");
        TRY_COMPARE(ended, (QList{2, 1}));
    }

    void aHundredCallsAtOnceAreAllAnswered()
    {
        QMap<int, int> answers; // call -> how often it was answered with its own number
        for (int call = 0; call < 100; ++call) {
            const auto path = answerPath(200, "{\"n\":" + QByteArray::number(call) + '}');
            const auto done = [&answers, call](const BackendAnswer &answer) {
                if (answer == BackendAnswer(QJsonObject{{u"n"_s, call}}))
                    ++answers[call];
            };
            if (call % 2)
                m_stage.client->postJSON(path, {}, done);
            else
                m_stage.client->getJSON(path, done);
        }
        TRY_COMPARE(answers.size(), 100);
        QCOMPARE(answers.values(), QList<int>(100, 1));
        QCOMPARE(m_stage.server.requests().size(), 100);
    }

    void nothingIsSaidOnceTheClientIsGone()
    {
        int answers = 0;
        const auto count = [&answers](const BackendAnswer &) { ++answers; };
        m_stage.client->postJSON(u"/hang"_s, {}, count);
        m_stage.client->getJSON(u"/stall"_s, count);
        TRY_COMPARE(m_stage.server.requests().size(), 2);
        m_stage.client.reset();
        TRY_COMPARE(m_stage.server.gone(), 2); // it does not stay connected either
        QCoreApplication::processEvents();
        QCOMPARE(answers, 0);
    }

    void aClientMayBeDestroyedBeforeItsCallsAreSent()
    {
        m_stage.client->postJSON(u"/hang"_s, {}, [](const BackendAnswer &) { QFAIL("answered"); });
        m_stage.client.reset();
        QCoreApplication::processEvents();
    }

    void whoeverIsToldMayDestroyTheClient()
    {
        int answers = 0;
        const auto destroy = [&](const BackendAnswer &) {
            ++answers;
            m_stage.client.reset();
        };
        m_stage.client->getJSON(u"/held/a/"_s + hex("{}"), destroy);
        m_stage.client->postJSON(u"/held/b/"_s + hex("{}"), {}, destroy);
        m_stage.client->postJSON(u"/hang"_s, {}, destroy);
        TRY_COMPARE(m_stage.server.requests().size(), 3);
        m_stage.server.release("a");
        m_stage.server.release("b");
        TRY_COMPARE(m_stage.server.gone(), 1);
        QCOMPARE(answers, 1);
    }

    void whoeverIsToldMayCallAgain()
    {
        std::optional<BackendAnswer> second;
        m_stage.client->getJSON(answerPath(500, "no"), [&](const BackendAnswer &) {
            m_stage.client->getJSON(answerPath(200, "{\"ok\":true}"),
                                    [&](const BackendAnswer &answer) { second = answer; });
        });
        TRY_VERIFY(second);
        QVERIFY(*second == BackendAnswer(fine));
    }
};

QUORVEL_TEST(TestNetworkBackendClient, QCoreApplication)
#include "tst_networkBackendClient.moc"
