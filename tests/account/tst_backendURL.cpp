#include "FakePreferences.h"
#include "backendURL.h"
#include "endOfProgram.h"
#include "preferenceKeys.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

FakePreferences withBase(const QString &base)
{
    FakePreferences preferences;
    preferences.values[PreferenceKeys::backendBaseURL()] = base;
    return preferences;
}

} // namespace

class TestBackendURL : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAPreferenceItIsTheBuiltInAddress()
    {
        QCOMPARE(backendURL(FakePreferences(), u"/auth/email/start"_s).toEncoded(),
                 "https://api.quorvel.example/api/auth/email/start");
        FakePreferences preferences;
        preferences.values[PreferenceKeys::backendBaseURL()] = true; // no text, so none
        QCOMPARE(backendURL(preferences, u"/x"_s).toEncoded(), "https://api.quorvel.example/api/x");
    }

    void thePreferenceIsTakenAsItIs_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("plain") << u"http://127.0.0.1:8080/api"_s
                               << QByteArray("http://127.0.0.1:8080/api/a/b");
        QTest::newRow("slash at the end")
            << u"https://b.example/api/"_s << QByteArray("https://b.example/api//a/b");
        QTest::newRow("no path") << u"https://b.example"_s << QByteArray("https://b.example/a/b");
        QTest::newRow("dots") << u"https://b.example/x/.."_s << QByteArray("https://b.example/x/../a/b");
        QTest::newRow("query") << u"https://b.example/?q="_s << QByteArray("https://b.example/?q=/a/b");
        QTest::newRow("escape") << u"https://b.example/%2F%20"_s
                                << QByteArray("https://b.example/%2F%20/a/b");
        QTest::newRow("beyond ASCII")
            << u"https://b.example/д"_s << QByteArray("https://b.example/%D0%B4/a/b");
        QTest::newRow("six") << u"http://[::1]:80/api"_s << QByteArray("http://[::1]:80/api/a/b");
        QTest::newRow("empty") << u""_s << QByteArray("/a/b");
    }
    void thePreferenceIsTakenAsItIs()
    {
        QFETCH(QString, base);
        QFETCH(QByteArray, address);
        QCOMPARE(backendURL(withBase(base), u"/a/b"_s).toEncoded(), address);
    }

    void whatIsNoUrlEndsTheProgram_data()
    {
        QTest::addColumn<QString>("base");
        QTest::newRow("space in the host") << u"https://secret b.example/api"_s;
        QTest::newRow("space in the path") << u"https://secret.example/a pi"_s;
        QTest::newRow("space before") << u" https://secret.example/api"_s;
        QTest::newRow("line end") << u"https://secret.example/api\n"_s;
        QTest::newRow("port") << u"https://secret.example:port/api"_s;
        QTest::newRow("port too large") << u"https://secret.example:70000/api"_s;
        QTest::newRow("bracket") << u"https://[secret/api"_s;
        QTest::newRow("bad escape") << u"https://secret.example/%zz"_s;
        QTest::newRow("angle") << u"https://secret.example/<api>"_s;
    }
    void whatIsNoUrlEndsTheProgram()
    {
        QFETCH(QString, base);
        const auto preferences = withBase(base);
        const auto message = messageOfAbort([&] { backendURL(preferences, u"/a/b"_s); });
        QVERIFY2(message.contains("backendBaseURL"), message);
        QVERIFY(!message.contains("secret"));
    }
};

QUORVEL_TEST(TestBackendURL)
#include "tst_backendURL.moc"
