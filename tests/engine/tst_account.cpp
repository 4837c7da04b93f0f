#include "ControllerHarness.h"
#include "suite.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaProperty>

using namespace Qt::StringLiterals;

namespace {

const QString email = u"ann@example.org"_s;

/// A controller whose sign-in fields are filled in.
QuorvelController &startTyped(ControllerHarness &harness, const QString &typedEmail = email,
                              const QString &code = u"123456"_s)
{
    auto &controller = harness.start();
    controller.setAuthEmailText(typedEmail);
    controller.setAuthCodeText(code);
    return controller;
}

std::optional<QString> storedText(const ControllerHarness &harness, const QString &key)
{
    return harness.preferences.get<QString>(key);
}

/// All log lines while it lives.
class LogLines
{
public:
    LogLines()
    {
        lines().clear();
        m_before = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &line) { lines().append(line); });
    }
    ~LogLines() { qInstallMessageHandler(m_before); }
    LogLines(const LogLines &) = delete;
    LogLines &operator=(const LogLines &) = delete;

    static QStringList &lines()
    {
        static QStringList all;
        return all;
    }

private:
    QtMessageHandler m_before;
};

/// All that the controller shows, as text, and how many fields that is.
QStringList published(const QuorvelController &controller)
{
    QStringList texts;
    const auto *meta = controller.metaObject();
    for (int place = 0; place < meta->propertyCount(); ++place) {
        QString text;
        QDebug(&text) << meta->property(place).name() << meta->property(place).read(&controller);
        texts.append(text);
    }
    return texts;
}

} // namespace

class TestAccount : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedMode_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<AccessMode>("mode");
        QTest::newRow("guest") << u"guest"_s << AccessMode::Guest;
        QTest::newRow("account") << u"account"_s << AccessMode::Account;
        QTest::newRow("none") << u"none"_s << AccessMode::None;
        QTest::newRow("other case") << u"Guest"_s << AccessMode::None;
        QTest::newRow("unknown") << u"admin"_s << AccessMode::None;
    }
    void storedMode()
    {
        QFETCH(QString, stored);
        ControllerHarness harness;
        harness.preferences.values[u"accessMode"_s] = stored;
        QTEST(harness.start().accessMode(), "mode");
    }

    void absentModeIsNone()
    {
        ControllerHarness harness;
        QCOMPARE(harness.start().accessMode(), AccessMode::None);
    }

    void guestForgetsTheAccount()
    {
        ControllerHarness harness;
        harness.preferences.values = {{u"accessMode"_s, u"account"_s},
                                      {u"signedInEmail"_s, u"a@b.c"_s},
                                      {u"serverSessionToken"_s, u"secret"_s}};
        auto &controller = harness.start();
        QCOMPARE(controller.signedInEmail(), std::optional(u"a@b.c"_s));
        controller.continueAsGuest();
        QCOMPARE(controller.accessMode(), AccessMode::Guest);
        QVERIFY(!controller.hasSignedInEmail());
        QCOMPARE(controller.authStatusText(), u"Guest mode active. Data stays local."_s);
        QCOMPARE(harness.preferences.values,
                 (std::map<QString, PreferenceValue>{{u"accessMode"_s, u"guest"_s}}));
        QVERIFY(harness.events().isEmpty());
        QCOMPARE(harness.start().accessMode(), AccessMode::Guest);
    }

    void signOutWritesNoneAndKeepsTheSession()
    {
        ControllerHarness harness;
        harness.preferences.values = {{u"accessMode"_s, u"account"_s},
                                      {u"serverSessionToken"_s, u"secret"_s}};
        auto &controller = harness.start();
        controller.startStudy();
        const auto events = harness.events();
        controller.signOut();
        QCOMPARE(controller.accessMode(), AccessMode::None);
        QCOMPARE(controller.authStatusText(),
                 u"Create an account to sync progress, or continue as Guest for local-only use."_s);
        QCOMPARE(harness.preferences.values.at(u"accessMode"_s), PreferenceValue(u"none"_s));
        QVERIFY(!harness.preferences.values.contains(u"serverSessionToken"_s));
        QCOMPARE(controller.mode(), QuorvelController::Mode::Studying);
        QCOMPARE(harness.events(), events);
    }

    void changesAreDurableWhenTheCommandReturns()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.continueAsGuest();
        controller.verifyEmailCode();
        harness.backend.answer(QJsonObject{{u"session"_s, u"t"_s}});
        controller.signOut();
        controller.handleAuthCallback(u"quorvel://auth?session=t&email=a"_s);
        QCOMPARE(harness.preferences.writes.size(), size_t(12));
        for (const auto &write : harness.preferences.writes)
            QCOMPARE(write.durability, Durability::AtOnce);
    }

    void theModeIsWrittenAfterTheTokenItNeeds()
    {
        ControllerHarness harness;
        startTyped(harness).verifyEmailCode();
        harness.backend.answer(QJsonObject{{u"session"_s, u"t"_s}});
        harness.controller->handleAuthCallback(u"quorvel://auth?session=t"_s);
        QStringList keys;
        for (const auto &write : harness.preferences.writes)
            keys.append(write.key);
        QCOMPARE(keys, QStringList({u"serverSessionToken"_s, u"signedInEmail"_s, u"accessMode"_s,
                                    u"serverSessionToken"_s, u"accessMode"_s}));
    }

    void anAddressIsSentTrimmedAndInLowerCase()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness, u" \n Ann@Example.ORG\u00a0"_s);
        controller.requestEmailCode();
        QCOMPARE(controller.authStatusText(), u"Sending verification code..."_s);
        QCOMPARE(harness.backend.calls.size(), size_t(1));
        QCOMPARE(harness.backend.calls[0].method, u"POST"_s);
        QCOMPARE(harness.backend.calls[0].path, u"/auth/email/start"_s);
        QCOMPARE(harness.backend.calls[0].body, (QJsonObject{{u"email"_s, email}}));
        QCOMPARE(controller.authEmailText(), u" \n Ann@Example.ORG\u00a0"_s);
        harness.backend.answer(QJsonObject{{u"session"_s, u"ignored"_s}});
        QCOMPARE(controller.authStatusText(), u"Code sent. In local dev, check the backend console."_s);
        QVERIFY(harness.preferences.writes.empty());
        QCOMPARE(controller.accessMode(), AccessMode::None);
        QVERIFY(harness.events().isEmpty());
    }

    void anAddressWithoutAFullStopIsRejected()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness, u"me@localhost"_s);
        controller.requestEmailCode();
        QCOMPARE(controller.authStatusText(), u"Enter a valid email."_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.setAuthEmailText(QString());
        controller.requestEmailCode();
        QCOMPARE(controller.authStatusText(), u"Введи корректную почту."_s);
        QVERIFY(harness.backend.calls.empty());
    }

    void anAtSignAndAFullStopAreSent()
    {
        ControllerHarness harness;
        startTyped(harness, u"@."_s).requestEmailCode();
        QCOMPARE(harness.backend.calls.at(0).body, (QJsonObject{{u"email"_s, u"@."_s}}));
    }

    void aFailedCodeRequestSaysWhatTheServerSaid()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.requestEmailCode();
        harness.backend.answer(errorOf(u"{\"error\": \"slow down\"}"_s));
        QCOMPARE(controller.authStatusText(), u"Backend unavailable: {\"error\": \"slow down\"}"_s);
        controller.requestEmailCode();
        controller.setLanguage(AppLanguage::Russian); // the text is in the language of the moment
        harness.backend.answer(errorOf(QString()));
        QCOMPARE(controller.authStatusText(), u"Backend недоступен: "_s);
        controller.requestEmailCode();
        QCOMPARE(controller.authStatusText(), u"Отправляю код подтверждения..."_s);
    }

    void verifyingNeedsAnAddressAndACode_data()
    {
        QTest::addColumn<QString>("typedEmail");
        QTest::addColumn<QString>("code");
        QTest::newRow("no code, also where the address is none") << u"nonsense"_s << u" \n"_s;
        QTest::newRow("no address") << u"  "_s << u"123456"_s;
        QTest::newRow("neither") << QString() << QString();
    }
    void verifyingNeedsAnAddressAndACode()
    {
        QFETCH(QString, typedEmail);
        QFETCH(QString, code);
        ControllerHarness harness;
        auto &controller = startTyped(harness, typedEmail, code);
        controller.verifyEmailCode();
        QCOMPARE(controller.authStatusText(), u"Enter email and code."_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.verifyEmailCode();
        QCOMPARE(controller.authStatusText(), u"Введи почту и код."_s);
        QVERIFY(harness.backend.calls.empty());
    }

    void aRightCodeSignsIn()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness, u" ANN@example.org "_s, u"\t aB12 \n"_s);
        controller.verifyEmailCode();
        QCOMPARE(controller.authStatusText(), u"Checking code..."_s);
        QCOMPARE(harness.backend.calls.at(0).method, u"POST"_s);
        QCOMPARE(harness.backend.calls.at(0).path, u"/auth/email/verify"_s);
        QCOMPARE(harness.backend.calls.at(0).body,
                 (QJsonObject{{u"email"_s, email}, {u"code"_s, u"aB12"_s}}));
        controller.setAuthEmailText(u"typed@mean.while"_s);
        harness.backend.answer(QJsonObject{{u"session"_s, u"token"_s}, {u"email"_s, u"other@b.c"_s}});
        QCOMPARE(controller.accessMode(), AccessMode::Account);
        QCOMPARE(controller.signedInEmail(), std::optional(email));
        QCOMPARE(controller.authStatusText(), u"Signed in. Progress can sync."_s);
        QCOMPARE(controller.authCodeText(), u"\t aB12 \n"_s);
        QCOMPARE(harness.preferences.values,
                 (std::map<QString, PreferenceValue>{{u"accessMode"_s, u"account"_s},
                                                     {u"signedInEmail"_s, email},
                                                     {u"serverSessionToken"_s, u"token"_s}}));
        QVERIFY(harness.events().isEmpty());
        QCOMPARE(harness.start().accessMode(), AccessMode::Account);
        QCOMPARE(harness.controller->signedInEmail(), std::optional(email));
    }

    void anAddressThatIsNoneIsVerifiedAllTheSame()
    {
        ControllerHarness harness;
        startTyped(harness, u"nonsense"_s).verifyEmailCode();
        QCOMPARE(harness.backend.calls.at(0).body.value(u"email"_s).toString(), u"nonsense"_s);
    }

    void withoutASessionTextTheOldTokenStaysAndTheUserIsSignedIn_data()
    {
        QTest::addColumn<QJsonObject>("answer");
        QTest::newRow("none") << QJsonObject();
        QTest::newRow("number") << QJsonObject{{u"session"_s, 5}};
        QTest::newRow("null") << QJsonObject{{u"session"_s, QJsonValue::Null}};
        QTest::newRow("object") << QJsonObject{{u"session"_s, QJsonObject{{u"token"_s, u"t"_s}}}};
    }
    void withoutASessionTextTheOldTokenStaysAndTheUserIsSignedIn()
    {
        QFETCH(QJsonObject, answer);
        for (const auto &old : {std::optional(u"old"_s), std::optional<QString>()}) {
            ControllerHarness harness;
            if (old)
                harness.preferences.values[u"serverSessionToken"_s] = *old;
            auto &controller = startTyped(harness);
            controller.verifyEmailCode();
            harness.backend.answer(answer);
            QCOMPARE(controller.accessMode(), AccessMode::Account);
            QCOMPARE(storedText(harness, u"serverSessionToken"_s), old);
            QCOMPARE(storedText(harness, u"accessMode"_s), std::optional(u"account"_s));
        }
    }

    void anEmptySessionReplacesTheOldOne()
    {
        ControllerHarness harness;
        harness.preferences.values[u"serverSessionToken"_s] = u"old"_s;
        startTyped(harness).verifyEmailCode();
        harness.backend.answer(QJsonObject{{u"session"_s, QString()}});
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(QString()));
    }

    void aTokenThatWouldBreakOutOfAHeaderIsNotStored()
    {
        ControllerHarness harness;
        harness.preferences.values[u"serverSessionToken"_s] = u"old"_s;
        auto &controller = startTyped(harness);
        controller.verifyEmailCode();
        QTest::ignoreMessage(QtWarningMsg,
                             "The backend's session token holds control characters and is not used");
        harness.backend.answer(QJsonObject{{u"session"_s, u"x\r\nX-Evil: 1"_s}});
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(u"old"_s));
        QCOMPARE(controller.accessMode(), AccessMode::Account);
    }

    void aWrongCodeChangesNothingButTheText()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.continueAsGuest();
        const auto stored = harness.preferences.values;
        controller.verifyEmailCode();
        harness.backend.answer(errorOf(u"wrong code"_s));
        QCOMPARE(controller.authStatusText(), u"Sign-in failed: wrong code"_s);
        QCOMPARE(controller.accessMode(), AccessMode::Guest);
        QVERIFY(!controller.hasSignedInEmail());
        QCOMPARE(harness.preferences.values, stored);
        QCOMPARE(controller.authCodeText(), u"123456"_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.verifyEmailCode();
        QCOMPARE(controller.authStatusText(), u"Проверяю код..."_s);
        harness.backend.answer(errorOf(u"wrong code"_s));
        QCOMPARE(controller.authStatusText(), u"Не удалось войти: wrong code"_s);
        controller.verifyEmailCode();
        harness.backend.answer(QJsonObject());
        QCOMPARE(controller.authStatusText(), u"Вход выполнен. Прогресс может синхронизироваться."_s);
    }

    void theLaterOfTwoAnswersWins()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.verifyEmailCode();
        controller.setAuthEmailText(u"second@b.c"_s);
        controller.verifyEmailCode();
        controller.requestEmailCode();
        QCOMPARE(harness.backend.calls.size(), size_t(3));
        harness.backend.answer(QJsonObject{{u"session"_s, u"second"_s}}, 1);
        QCOMPARE(controller.signedInEmail(), std::optional(u"second@b.c"_s));
        harness.backend.answer(QJsonObject{{u"session"_s, u"first"_s}}, 0);
        QCOMPARE(controller.signedInEmail(), std::optional(email));
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(u"first"_s));
        QCOMPARE(storedText(harness, u"signedInEmail"_s), std::optional(email));
        harness.backend.answer(errorOf(u"too late"_s));
        QCOMPARE(controller.authStatusText(), u"Backend unavailable: too late"_s);
        QCOMPARE(controller.accessMode(), AccessMode::Account);
    }

    void anAnswerThatComesAfterSignOutIsAppliedAllTheSame()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.verifyEmailCode();
        controller.continueAsGuest();
        controller.signOut();
        harness.backend.answer(QJsonObject{{u"session"_s, u"token"_s}});
        QCOMPARE(controller.accessMode(), AccessMode::Account);
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(u"token"_s));
    }

    void anAnswerForAControllerThatIsGoneDoesNothing()
    {
        ControllerHarness harness;
        auto &controller = startTyped(harness);
        controller.requestEmailCode();
        controller.verifyEmailCode();
        controller.openOAuth(u"google"_s);
        controller.openOAuth(u"google"_s);
        harness.controller.reset();
        QCOMPARE(harness.backend.calls.size(), size_t(4));
        harness.backend.answer(QJsonObject());
        harness.backend.answer(QJsonObject{{u"session"_s, u"token"_s}});
        harness.backend.answer(QJsonObject{{u"url"_s, u"https://a.example/"_s}});
        harness.backend.answer(errorOf(u"gone"_s));
        QVERIFY(harness.preferences.writes.empty());
        QVERIFY(harness.urls.opened.isEmpty());
    }

    void onlyYandexIsYandex_data()
    {
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QString>("path");
        QTest::newRow("google") << u"google"_s << u"/auth/google/start"_s;
        QTest::newRow("yandex") << u"yandex"_s << u"/auth/yandex/start"_s;
        QTest::newRow("google in capitals") << u"GOOGLE"_s << u"/auth/google/start"_s;
        QTest::newRow("yandex in capitals") << u"Yandex"_s << u"/auth/google/start"_s;
        QTest::newRow("unknown") << u"../admin"_s << u"/auth/google/start"_s;
        QTest::newRow("empty") << QString() << u"/auth/google/start"_s;
    }
    void onlyYandexIsYandex()
    {
        QFETCH(QString, provider);
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.openOAuth(provider);
        QCOMPARE(controller.authStatusText(), u"Opening browser..."_s);
        QCOMPARE(harness.backend.calls.size(), size_t(1));
        QCOMPARE(harness.backend.calls[0].method, u"GET"_s);
        QTEST(harness.backend.calls[0].path, "path");
    }

    void theProvidersPageIsOpened()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setLanguage(AppLanguage::Russian);
        controller.openOAuth(u"yandex"_s);
        const auto page = u"https://oauth.example/authorize?client_id=1&state=a%2Fb"_s;
        harness.backend.answer(QJsonObject{{u"url"_s, page}});
        QCOMPARE(harness.urls.opened, QList<QUrl>{QUrl(page)});
        QCOMPARE(controller.authStatusText(), u"Открываю браузер..."_s);
        QCOMPARE(controller.accessMode(), AccessMode::None);
        QVERIFY(harness.events().isEmpty());
    }

    void whatIsNoPageOfTheWebIsNotOpened_data()
    {
        QTest::addColumn<QJsonObject>("answer");
        const auto row = [](const char *what, const QJsonValue &url) {
            QTest::newRow(what) << QJsonObject{{u"url"_s, url}};
        };
        QTest::newRow("missing") << QJsonObject();
        row("number", 5);
        row("null", QJsonValue::Null);
        row("list", QJsonArray{u"https://a.example/"_s});
        row("empty", QString());
        row("does not parse", u"https://a.example:port/"_s);
        row("no host", u"https:///path"_s);
        row("relative", u"/auth/google"_s);
        row("without scheme", u"a.example/auth"_s);
        row("file", u"file:///etc/passwd"_s);
        row("script", u"javascript:alert(1)"_s);
        row("own callback", u"quorvel://auth?session=x"_s);
        row("mail", u"mailto:a@b.c"_s);
    }
    void whatIsNoPageOfTheWebIsNotOpened()
    {
        QFETCH(QJsonObject, answer);
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.openOAuth(u"google"_s);
        harness.backend.answer(answer);
        QVERIFY(harness.urls.opened.isEmpty());
        QCOMPARE(controller.authStatusText(), u"Sign-in failed"_s);
        controller.setLanguage(AppLanguage::Russian);
        controller.openOAuth(u"google"_s);
        harness.backend.answer(answer);
        QCOMPARE(controller.authStatusText(), u"Не удалось войти"_s);
    }

    void aBackendThatIsAwayIsToldBeforeTheBrowserOpens()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.openOAuth(u"google"_s);
        harness.backend.answer(errorOf(u"Connection refused"_s));
        QCOMPARE(controller.authStatusText(), u"Backend unavailable: Connection refused"_s);
        QVERIFY(harness.urls.opened.isEmpty());
    }

    void aCallbackSignsIn()
    {
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.setLanguage(AppLanguage::Russian);
        controller.continueAsGuest();
        controller.handleAuthCallback(
            u"quorvel://auth?session=tok%2Fen&email=Ann%40Example.org&provider=google"_s);
        QCOMPARE(controller.accessMode(), AccessMode::Account);
        QCOMPARE(controller.signedInEmail(), std::optional(u"Ann@Example.org"_s));
        QCOMPARE(controller.authStatusText(), u"Вход выполнен. Прогресс может синхронизироваться."_s);
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(u"tok/en"_s));
        QCOMPARE(storedText(harness, u"signedInEmail"_s), std::optional(u"Ann@Example.org"_s));
        QCOMPARE(storedText(harness, u"accessMode"_s), std::optional(u"account"_s));
        QCOMPARE(harness.events(), QStringList{u"Signed in with Google."_s});
        QVERIFY(harness.backend.calls.empty());
    }

    void aCallbackWithoutAnAddressLeavesTheOldOne()
    {
        ControllerHarness harness;
        harness.preferences.values[u"signedInEmail"_s] = u"old@b.c"_s;
        auto &controller = harness.start();
        controller.handleAuthCallback(u"quorvel://auth?session=1&session=2&email="_s);
        QCOMPARE(controller.signedInEmail(), std::optional(u"old@b.c"_s));
        QCOMPARE(storedText(harness, u"signedInEmail"_s), std::optional(u"old@b.c"_s));
        QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(u"1"_s));
        QCOMPARE(harness.events(), QStringList{u"Signed in with OAuth."_s});
    }

    void aCallbackThatIsNoneLeavesTheMode_data()
    {
        QTest::addColumn<QString>("url");
        QTest::newRow("address without session") << u"quorvel://auth?email=a@b.c"_s;
        QTest::newRow("host Auth") << u"quorvel://Auth?session=x"_s;
        QTest::newRow("line break in the token") << u"quorvel://auth?session=x%0D%0Ay"_s;
        QTest::newRow("empty") << QString();
    }
    void aCallbackThatIsNoneLeavesTheMode()
    {
        QFETCH(QString, url);
        ControllerHarness harness;
        auto &controller = harness.start();
        controller.continueAsGuest();
        const auto stored = harness.preferences.values;
        controller.handleAuthCallback(url);
        QCOMPARE(controller.authStatusText(), u"Sign-in failed"_s);
        QCOMPARE(controller.accessMode(), AccessMode::Guest);
        QVERIFY(!controller.hasSignedInEmail());
        QCOMPARE(harness.preferences.values, stored);
        QVERIFY(harness.events().isEmpty());
        controller.setLanguage(AppLanguage::Russian);
        controller.handleAuthCallback(url);
        QCOMPARE(controller.authStatusText(), u"Не удалось войти"_s);
    }

    void theTokenIsSeenNowhereButUnderItsKey()
    {
        ControllerHarness harness;
        const LogLines log;
        const auto token = u"s3cr3t-T0ken"_s;
        auto &controller = startTyped(harness);
        QStringList seen;
        const auto look = [&] { seen += published(controller); };
        for (const auto language : {AppLanguage::English, AppLanguage::Russian}) {
            controller.setLanguage(language);
            controller.requestEmailCode();
            harness.backend.answer(QJsonObject{{u"session"_s, token}});
            look();
            controller.verifyEmailCode();
            harness.backend.answer(QJsonObject{{u"session"_s, token}, {u"note"_s, token}});
            QCOMPARE(storedText(harness, u"serverSessionToken"_s), std::optional(token));
            look();
            controller.generateAIPlanAndCards();
            QVERIFY(
                !QString::fromUtf8(QJsonDocument(harness.backend.calls.at(0).body).toJson()).contains(token));
            harness.backend.answer(errorOf(u"sorry"_s));
            look();
            controller.signOut();
            controller.openOAuth(u"google"_s);
            harness.backend.answer(QJsonObject{{u"session"_s, token}, {u"url"_s, token}});
            look();
            controller.handleAuthCallback(u"quorvel://open?session="_s + token);
            controller.handleAuthCallback(u"quorvel://auth?session="_s + token);
            look();
            controller.verifyEmailCode();
            harness.backend.answer(QJsonObject{{u"session"_s, token + u"\n"_s}});
            look();
        }
        const auto holdsToken = [&](const QString &text) { return text.contains(token); };
        QVERIFY(!seen.filter(email).isEmpty()); // so this does see what is published
        QVERIFY(std::none_of(seen.begin(), seen.end(), holdsToken));
        QCOMPARE(LogLines::lines().size(), 2);
        QVERIFY(std::none_of(LogLines::lines().begin(), LogLines::lines().end(), holdsToken));
        for (const auto &[name, bytes] : harness.files.files)
            QVERIFY2(!bytes.contains(token.toUtf8()), qPrintable(name));
        for (const auto &write : harness.preferences.writes)
            QVERIFY(write.key == u"serverSessionToken" || write.value != PreferenceValue(token));
    }
};

QUORVEL_TEST(TestAccount, QCoreApplication)
#include "tst_account.moc"
