#include "domains.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestDomains : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostsStandAsWritten_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("host"); // empty: none
        QTest::newRow("plain") << u"https://example.org/a"_s << u"example.org"_s;
        QTest::newRow("upper case") << u"HTTPS://Example.ORG"_s << u"Example.ORG"_s;
        QTest::newRow("user and port") << u"http://me:x@example.org:81?q"_s << u"example.org"_s;
        QTest::newRow("address in brackets") << u"http://[::1]:8080/"_s << u"[::1]"_s;
        QTest::newRow("no scheme") << u"//example.org/a"_s << u"example.org"_s;
        QTest::newRow("broken escape") << u"https://example.org/watch?v=%zz"_s << u"example.org"_s;
        QTest::newRow("escape cut off") << u"https://example.org/watch?v=%D"_s << u"example.org"_s;
        QTest::newRow("letters browsers leave")
            << u"https://example.org/?a={b}|\"c\"^`[d]"_s << u"example.org"_s;
        QTest::newRow("at-sign in the path") << u"https://example.org/@name"_s << u"example.org"_s;
        QTest::newRow("trailing dot") << u"https://example.org./"_s << u"example.org."_s;
        QTest::newRow("file") << u"file:///example.org"_s << QString();
        QTest::newRow("blank page") << u"about:blank"_s << QString();
        QTest::newRow("bare name") << u"example.org"_s << QString();
        QTest::newRow("blank in the host") << u"https://exam ple.org/"_s << QString();
        QTest::newRow("blank in the path") << u"https://example.org/a b"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void hostsStandAsWritten()
    {
        QFETCH(QString, url);
        QTEST(hostOfUrl(url).value_or(QString()), "host");
    }

    void setsHoldDomainsAndAllBelow_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("held");
        QTest::newRow("itself") << u"example.org"_s << true;
        QTest::newRow("below") << u"a.b.example.org"_s << true;
        QTest::newRow("empty label below") << u"a..example.org"_s << true;
        QTest::newRow("leading dot") << u".example.org"_s << true;
        QTest::newRow("same letters") << u"badexample.org"_s << false;
        QTest::newRow("begins with it") << u"example.org.other.net"_s << false;
        QTest::newRow("above") << u"org"_s << false;
        QTest::newRow("trailing dot") << u"example.org."_s << false;
        QTest::newRow("second entry") << u"m.second.net"_s << true;
        QTest::newRow("empty") << QString() << false;
    }
    void setsHoldDomainsAndAllBelow()
    {
        QFETCH(QString, host);
        const DomainSet domains({u" "_s, u"www."_s, u"https://www.Example.org/x"_s, u"SECOND.net/path"_s});
        QTEST(domains.contains(host), "held");
    }

    void emptySetHoldsNothing()
    {
        const DomainSet domains(QStringList{});
        QVERIFY(!domains.contains(u"example.org"_s));
        QVERIFY(!domains.contains(QString()));
    }
};

QUORVEL_TEST(TestDomains)
#include "tst_domains.moc"
