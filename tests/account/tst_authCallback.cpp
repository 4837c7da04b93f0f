#include "AuthCallback.h"
#include "suite.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace {

QString sessionOf(const QString &url)
{
    const auto callback = readAuthCallback(url);
    return callback ? callback->session : u"(none)"_s;
}

} // namespace

class TestAuthCallback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void allThreeValuesAreRead()
    {
        QCOMPARE(readAuthCallback(u"quorvel://auth?session=TOKEN&email=a@b.c&provider=google"_s),
                 (AuthCallback{u"TOKEN"_s, u"a@b.c"_s, u"google"_s}));
        QCOMPARE(readAuthCallback(u"quorvel://auth/any/path?provider=X&other=1&session=t#part"_s),
                 (AuthCallback{u"t"_s, std::nullopt, u"X"_s}));
    }

    void onlyTheHostAuthIsRead_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isRead");
        QTest::newRow("plain") << u"quorvel://auth?session=x"_s << true;
        QTest::newRow("with a slash") << u"quorvel://auth/?session=x"_s << true;
        QTest::newRow("other scheme, which the caller checks") << u"other+1.0-x://auth?session=x"_s << true;
        QTest::newRow("user and port are not the host") << u"quorvel://user:pw@auth:80?session=x"_s << true;
        QTest::newRow("empty port") << u"quorvel://auth:?session=x"_s << true;
        QTest::newRow("port that is no number") << u"quorvel://auth:8o?session=x"_s << false;
        QTest::newRow("two at-signs") << u"quorvel://a@b@auth?session=x"_s << false;
        QTest::newRow("as user only") << u"quorvel://auth@evil?session=x"_s << false;
        QTest::newRow("capital") << u"quorvel://Auth?session=x"_s << false;
        QTest::newRow("full stop behind") << u"quorvel://auth.?session=x"_s << false;
        QTest::newRow("encoded") << u"quorvel://%61uth?session=x"_s << false;
        QTest::newRow("longer") << u"quorvel://authority?session=x"_s << false;
        QTest::newRow("other") << u"quorvel://open?session=x"_s << false;
        QTest::newRow("space") << u"quorvel:// auth?session=x"_s << false;
        QTest::newRow("full-width letters") << u"quorvel://ａuth?session=x"_s << false;
        QTest::newRow("no host") << u"quorvel://?session=x"_s << false;
        QTest::newRow("no host but a path") << u"quorvel:///auth?session=x"_s << false;
        QTest::newRow("no authority") << u"quorvel:auth?session=x"_s << false;
        QTest::newRow("one slash") << u"quorvel:/auth?session=x"_s << false;
        QTest::newRow("backslashes") << u"quorvel:\\\\auth?session=x"_s << false;
        QTest::newRow("no scheme") << u"//auth?session=x"_s << false;
        QTest::newRow("empty scheme") << u"://auth?session=x"_s << false;
        QTest::newRow("scheme that is none") << u"1quorvel://auth?session=x"_s << false;
        QTest::newRow("space in front") << u" quorvel://auth?session=x"_s << false;
        QTest::newRow("colon in the query only") << u"auth?session=x:"_s << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("only a scheme") << u"quorvel:"_s << false;
        QTest::newRow("only slashes") << u"quorvel://"_s << false;
    }
    void onlyTheHostAuthIsRead()
    {
        QFETCH(QString, url);
        QTEST(readAuthCallback(url).has_value(), "isRead");
    }

    void withoutASessionThereIsNone_data()
    {
        QTest::addColumn<QString>("url");
        QTest::newRow("no query") << u"quorvel://auth"_s;
        QTest::newRow("empty query") << u"quorvel://auth?"_s;
        QTest::newRow("only an address") << u"quorvel://auth?email=a@b.c"_s;
        QTest::newRow("empty") << u"quorvel://auth?session="_s;
        QTest::newRow("without a value") << u"quorvel://auth?session"_s;
        QTest::newRow("the first is empty") << u"quorvel://auth?session=&session=x"_s;
        QTest::newRow("the first has no value") << u"quorvel://auth?session&session=x"_s;
        QTest::newRow("other case") << u"quorvel://auth?Session=x"_s;
        QTest::newRow("encoded name") << u"quorvel://auth?%73ession=x"_s;
        QTest::newRow("space at the name") << u"quorvel://auth?session =x"_s;
        QTest::newRow("in the fragment") << u"quorvel://auth#?session=x"_s;
        QTest::newRow("behind a semicolon") << u"quorvel://auth?a=1;session=x"_s;
        QTest::newRow("percent at the end") << u"quorvel://auth?session=x%"_s;
        QTest::newRow("one digit") << u"quorvel://auth?session=x%4"_s;
        QTest::newRow("no digits") << u"quorvel://auth?session=%zz"_s;
        QTest::newRow("sign as a digit") << u"quorvel://auth?session=%-1"_s;
        QTest::newRow("no UTF-8") << u"quorvel://auth?session=%FF"_s;
        QTest::newRow("half a character") << u"quorvel://auth?session=%D0"_s;
        QTest::newRow("overlong") << u"quorvel://auth?session=%C0%AF"_s;
        QTest::newRow("encoded surrogate") << u"quorvel://auth?session=%ED%A0%80"_s;
        QTest::newRow("lone surrogate") << u"quorvel://auth?session=x"_s + QChar(0xD800);
    }
    void withoutASessionThereIsNone()
    {
        QFETCH(QString, url);
        QCOMPARE(readAuthCallback(url), std::nullopt);
    }

    void aTokenThatWouldBreakOutOfAHeaderIsNone_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("line break") << u"x%0D%0AX-Evil:%201"_s;
        QTest::newRow("line feed") << u"x%0a"_s;
        QTest::newRow("tab") << u"x%09y"_s;
        QTest::newRow("NUL") << u"x%00y"_s;
        QTest::newRow("delete") << u"%7F"_s;
        QTest::newRow("next line") << u"%C2%85"_s;
        QTest::newRow("raw line break") << u"x\r\ny"_s;
        QTest::newRow("raw NUL") << u"x"_s + QChar(0) + u"y"_s;
    }
    void aTokenThatWouldBreakOutOfAHeaderIsNone()
    {
        QFETCH(QString, value);
        QCOMPARE(readAuthCallback(u"quorvel://auth?session="_s + value), std::nullopt);
        // The other values are then absent, and the sign-in goes on.
        QCOMPARE(readAuthCallback(u"quorvel://auth?session=t&email="_s + value + u"&provider="_s + value),
                 (AuthCallback{u"t"_s, std::nullopt, std::nullopt}));
    }

    void theFirstItemOfANameCounts()
    {
        QCOMPARE(
            readAuthCallback(u"quorvel://auth?session=1&email=a&session=2&email=b&provider=p&provider=q"_s),
            (AuthCallback{u"1"_s, u"a"_s, u"p"_s}));
        QCOMPARE(readAuthCallback(u"quorvel://auth?session=1&email&email=b&provider&provider=q"_s),
                 (AuthCallback{u"1"_s, std::nullopt, std::nullopt}));
    }

    void valuesAreDecoded_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("session");
        QTest::newRow("percent signs") << u"a%20b%2Bc%25%26%3d"_s << u"a b+c%&="_s;
        QTest::newRow("once only") << u"%2541"_s << u"%41"_s;
        QTest::newRow("plus stays") << u"a+b"_s << u"a+b"_s;
        QTest::newRow("later equals signs") << u"a=b=="_s << u"a=b=="_s;
        QTest::newRow("question mark and slash") << u"a?b/c"_s << u"a?b/c"_s;
        QTest::newRow("Cyrillic") << u"%D0%B6ж"_s << u"жж"_s;
        QTest::newRow("four bytes") << u"%F0%9F%94%91"_s << u"🔑"_s;
        QTest::newRow("byte order mark") << u"%EF%BB%BFx"_s << u"\uFEFFx"_s;
    }
    void valuesAreDecoded()
    {
        QFETCH(QString, value);
        QTEST(sessionOf(u"quorvel://auth?session="_s + value + u"&x=y"_s), "session");
    }

    void anEmptyAddressIsNone()
    {
        QCOMPARE(readAuthCallback(u"quorvel://auth?session=1&email="_s)->email, std::nullopt);
        QCOMPARE(readAuthCallback(u"quorvel://auth?session=1&email=%FF"_s)->email, std::nullopt);
    }

    void longTextsAreNotKept()
    {
        const auto head = u"quorvel://auth?session="_s;
        const auto longest = head + QString(longestAuthCallback - head.size(), u'x');
        QCOMPARE(sessionOf(longest).size(), longestAuthCallback - head.size());
        QCOMPARE(readAuthCallback(longest + u'x'), std::nullopt);
        QCOMPARE(readAuthCallback(head + QString(8 << 20, u'%')), std::nullopt);
    }

    void thousandsOfItemsAreReadOnce()
    {
        QCOMPARE(sessionOf(u"quorvel://auth?"_s + u"&=%&a="_s.repeated(10'000) + u"&session=x"_s), u"x"_s);
    }

    /// Whatever pieces a callback is made of, it is none or holds a token that fits a header.
    void noTextDoesWorseThanNone()
    {
        const QStringList pieces{
            u"quorvel:"_s, u"//"_s,     u"auth"_s, u"?"_s,      u"session"_s,
            u"="_s,        u"x"_s,      u"%"_s,    u"%00"_s,    u"%D0"_s,
            u"&"_s,        u"#"_s,      u"@"_s,    u":"_s,      QString(QChar(0)),
            QChar(0xDC00), u"%0D%0A"_s, u"ж"_s,    u"email="_s, u"quorvel://auth?session="_s};
        QRandomGenerator random(1);
        int read = 0;
        for (int count = 0; count < 20'000; ++count) {
            QString url = random.bounded(2) ? u"quorvel://auth?"_s : QString();
            for (int left = random.bounded(12); left > 0; --left)
                url += pieces[random.bounded(int(pieces.size()))];
            const auto callback = readAuthCallback(url);
            if (!callback)
                continue;
            ++read;
            QVERIFY(!callback->session.isEmpty());
            QVERIFY(!callback->email || !callback->email->isEmpty());
            for (const auto character : callback->session + callback->email.value_or(QString()))
                QVERIFY(character.category() != QChar::Other_Control);
        }
        QVERIFY(read > 100);
    }

    void eachWordOfTheProviderBeginsWithACapital_data()
    {
        QTest::addColumn<std::optional<QString>>("provider");
        QTest::addColumn<QString>("name");
        const auto row = [](const char *what, const std::optional<QString> &provider, const QString &name) {
            QTest::newRow(what) << provider << name;
        };
        row("lower case", u"google"_s, u"Google"_s);
        row("upper case", u"YANDEX"_s, u"Yandex"_s);
        row("words", u"my school id"_s, u"My School Id"_s);
        row("spaces stay", u" my  id "_s, u" My  Id "_s);
        row("no-break space", u"my\u00a0id"_s, u"My\u00a0Id"_s);
        row("hyphen and apostrophe are in a word", u"o'neill-ID"_s, u"O'neill-id"_s);
        row("the first letter, not the first sign", u"(google) 1password"_s, u"(Google) 1Password"_s);
        row("no letters", u"42"_s, u"42"_s);
        row("Cyrillic", u"яНДЕКС ид"_s, u"Яндекс Ид"_s);
        row("no cases", u"微信"_s, u"微信"_s);
        row("digraph", u"ǆep"_s, u"ǅep"_s);
        row("outside the first plane", u"𐐨𐐀"_s, u"𐐀𐐨"_s);
        row("lone surrogate", QString(QChar(0xD801)) + u"x"_s, QString(QChar(0xD801)) + u"X"_s);
        row("absent", std::nullopt, u"OAuth"_s);
        row("empty", QString(), u"OAuth"_s);
        row("blank", u" \u2003"_s, u"OAuth"_s);
    }
    void eachWordOfTheProviderBeginsWithACapital()
    {
        QFETCH(std::optional<QString>, provider);
        QTEST(providerName({u"t"_s, std::nullopt, provider}), "name");
    }
};

QUORVEL_TEST(TestAuthCallback, QCoreApplication)
#include "tst_authCallback.moc"
