#include "BackendAnswer.h"
#include "suite.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

class TestBackendAnswer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDomainHasItsName() { QCOMPARE(backendErrorDomain(), u"QuorvelBackend"_s); }

    void onlyTwoHundredsPass()
    {
        for (int status = -1; status < 1000; ++status)
            QCOMPARE(validateBackendResponse(status, "body").has_value(), status < 200 || status > 299);
        QVERIFY(validateBackendResponse(std::nullopt, "body"));
    }

    void aRefusalSaysTheWholeBody_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("description");
        QTest::newRow("text") << QByteArray("no such code") << u"no such code"_s;
        QTest::newRow("empty") << QByteArray("") << u""_s;
        QTest::newRow("none") << QByteArray() << u""_s;
        QTest::newRow("JSON") << QByteArray("{\"error\":\"x\"}\n") << u"{\"error\":\"x\"}\n"_s;
        QTest::newRow("Cyrillic") << QByteArray("Неверный код") << u"Неверный код"_s;
        QTest::newRow("beyond the first plane") << QByteArray("\xF0\x9F\x99\x82") << u"\U0001F642"_s;
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBFno") << u"\uFEFFno"_s;
        QTest::newRow("replacement character") << QByteArray("\xEF\xBF\xBD") << u"\uFFFD"_s;
        QTest::newRow("zero byte") << QByteArray("a\0b", 3) << QString(u"a\0b"_s);
        QTest::newRow("Latin-1") << QByteArray("caf\xE9") << u"Backend error"_s;
        QTest::newRow("cut within a character") << QByteArray("caf\xC3") << u"Backend error"_s;
        QTest::newRow("overlong") << QByteArray("\xC0\xAF") << u"Backend error"_s;
        QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << u"Backend error"_s;
    }
    void aRefusalSaysTheWholeBody()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, description);
        const BackendError expected{u"QuorvelBackend"_s, 1, description};
        QVERIFY(validateBackendResponse(500, body) == expected);
        QVERIFY(validateBackendResponse(std::nullopt, body) == expected);
    }

    void anObjectIsGivenAsItIs()
    {
        const auto answer = decodeJSONObject(" {\"a\":{\"b\":[1,null]},\"c\":\"\\u0434\"} \n");
        const QJsonObject expected{{u"a"_s, QJsonObject{{u"b"_s, QJsonArray{1, QJsonValue()}}}},
                                   {u"c"_s, u"д"_s}};
        QVERIFY(answer == BackendAnswer(expected));
        QVERIFY(decodeJSONObject("{}") == BackendAnswer(QJsonObject()));
    }

    void whatIsNoObjectIsNoAnswer_data()
    {
        QTest::addColumn<QByteArray>("body");
        for (const auto *body : {"[]", "[{}]", " [1] ", "null", "5", "-0.5e3", "true", "\"text\"", " null\n"})
            QTest::newRow(body) << QByteArray(body);
    }
    void whatIsNoObjectIsNoAnswer()
    {
        QFETCH(QByteArray, body);
        QVERIFY(decodeJSONObject(body) ==
                BackendAnswer(BackendError{u"QuorvelBackend"_s, 2, u"Invalid backend JSON."_s}));
    }

    void whatIsNoJsonIsTheParsersOwnError_data()
    {
        QTest::addColumn<QByteArray>("body");
        for (const auto *body : {"", " ", "hello", "<html>", "{", "{\"a\":}", "{\"a\":1,}", "{} {}", "{}x",
                                 "1,2", "5],[6", "nul", "{'a':1}", "{\"a\":\"\xE9\"}", "{\"a\":NaN}"})
            QTest::newRow(body) << QByteArray(body);
        QTest::newRow("too deep") << QByteArray("{\"a\":") + QByteArray(100'000, '[');
    }
    void whatIsNoJsonIsTheParsersOwnError()
    {
        QFETCH(QByteArray, body);
        QJsonParseError problem;
        QJsonDocument::fromJson(body, &problem);
        QVERIFY(problem.error != QJsonParseError::NoError);
        const BackendError expected{u"QJsonParseError"_s, problem.error, problem.errorString()};
        QVERIFY(decodeJSONObject(body) == BackendAnswer(expected));
    }
};

QUORVEL_TEST(TestBackendAnswer, QCoreApplication)
#include "tst_backendAnswer.moc"
