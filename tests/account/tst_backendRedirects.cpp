#include "backendRedirects.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

const QUrl here(u"https://b.example/api/auth/start"_s);

BackendRequest post()
{
    return {.url = here, .body = "{}", .authorization = "Bearer token", .timeout = std::chrono::seconds(7)};
}

} // namespace

class TestBackendRedirects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheseStatusesLeadOn()
    {
        for (int status = 0; status < 600; ++status) {
            const bool leadsOn =
                status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
            QCOMPARE(redirected(post(), status, "/x").has_value(), leadsOn);
        }
    }

    void threeHundredSevenAndEightKeepWhatIsAsked()
    {
        auto expected = post();
        expected.url = QUrl(u"https://b.example/x"_s);
        QVERIFY(redirected(post(), 307, "/x") == expected);
        QVERIFY(redirected(post(), 308, "/x") == expected);
    }

    void theOthersBecomeAGet()
    {
        auto expected = post();
        expected.url = QUrl(u"https://b.example/x"_s);
        expected.body.reset();
        for (const int status : {301, 302, 303})
            QVERIFY(redirected(post(), status, "/x") == expected);
    }

    void anAddressIsTakenRelativeToTheOldOne_data()
    {
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("beside") << QByteArray("end?x=1") << QByteArray("https://b.example/api/auth/end?x=1");
        QTest::newRow("above") << QByteArray("../x") << QByteArray("https://b.example/api/x");
        QTest::newRow("host") << QByteArray("//c.example/x") << QByteArray("https://c.example/x");
        QTest::newRow("whole") << QByteArray("https://c.example/x") << QByteArray("https://c.example/x");
    }
    void anAddressIsTakenRelativeToTheOldOne()
    {
        QFETCH(QByteArray, location);
        QFETCH(QByteArray, address);
        const auto next = redirected(post(), 307, location);
        QVERIFY(next);
        QCOMPARE(next->url.toEncoded(), address);
    }

    void theTokenStaysWithItsOrigin_data()
    {
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<bool>("stays");
        QTest::newRow("same") << QByteArray("https://b.example/x") << true;
        QTest::newRow("port said") << QByteArray("https://b.example:443/x") << true;
        QTest::newRow("capitals") << QByteArray("HTTPS://B.Example/x") << true;
        QTest::newRow("other host") << QByteArray("https://c.example/x") << false;
        QTest::newRow("host below") << QByteArray("https://a.b.example/x") << false;
        QTest::newRow("host that begins alike") << QByteArray("https://b.example.c.example/x") << false;
        QTest::newRow("name before another host") << QByteArray("https://b.example@c.example/x") << false;
        QTest::newRow("other port") << QByteArray("https://b.example:444/x") << false;
    }
    void theTokenStaysWithItsOrigin()
    {
        QFETCH(QByteArray, location);
        QFETCH(bool, stays);
        for (const int status : {302, 307}) {
            const auto next = redirected(post(), status, location);
            QVERIFY(next);
            QCOMPARE(next->authorization, stays ? "Bearer token" : "");
        }
    }

    void theTokenDoesNotComeBack()
    {
        const auto away = redirected(post(), 307, "https://c.example/x");
        const auto back = redirected(*away, 307, here.toEncoded());
        QCOMPARE(back->url, here);
        QVERIFY(back->authorization.isEmpty());
    }

    void fromHttpToHttpsIsFollowedWithoutTheToken()
    {
        auto plain = post();
        plain.url.setScheme(u"http"_s);
        const auto next = redirected(plain, 307, here.toEncoded());
        QCOMPARE(next->url, here);
        QVERIFY(next->authorization.isEmpty());
    }

    void whatLeadsNowhereIsNotFollowed_data()
    {
        QTest::addColumn<QByteArray>("location");
        for (const auto *location :
             {"", "http://b.example/x", "http://c.example/x", "file:///etc/passwd", "ftp://b.example/",
              "data:,{}", "javascript:x", "https://", "https:///x", "https://b.example:port/",
              "https://b.example/a b", "https://one.example/, https://two.example/"})
            QTest::newRow(location) << QByteArray(location);
    }
    void whatLeadsNowhereIsNotFollowed()
    {
        QFETCH(QByteArray, location);
        QVERIFY(!redirected(post(), 302, location));
        QVERIFY(!redirected(post(), 307, location));
    }
};

QUORVEL_TEST(TestBackendRedirects)
#include "tst_backendRedirects.moc"
