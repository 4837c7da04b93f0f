#include "BackendStage.h"
#include "suite.h"

#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

/// A new certificate signed by its own key, and that key, in one file; `name` as openssl writes it.
bool makeCertificate(const QString &file, const QString &name)
{
    QProcess openssl;
    openssl.setProcessChannelMode(QProcess::MergedChannels);
    openssl.start(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                                 u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                                 u"-subj"_s, u"/CN=Quorvel test"_s, u"-addext"_s, u"subjectAltName="_s + name,
                                 u"-keyout"_s, file, u"-out"_s, file + u".certificate"_s});
    if (!openssl.waitForFinished(patience) || openssl.exitCode() != 0) {
        qWarning("openssl: %s", openssl.readAll().constData());
        return false;
    }
    QFile certificate(file + u".certificate"_s);
    QFile both(file);
    return certificate.open(QIODevice::ReadOnly) && both.open(QIODevice::Append) &&
           both.write(certificate.readAll()) > 0;
}

} // namespace

class TestNetworkBackendTls : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    const QSslConfiguration m_usual = QSslConfiguration::defaultConfiguration();

    void trust(const QString &file)
    {
        auto trusting = m_usual;
        trusting.addCaCertificates(QSslCertificate::fromPath(file + u".certificate"_s));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(makeCertificate(m_folder.filePath(u"right"_s), u"IP:127.0.0.1"_s));
        QVERIFY(makeCertificate(m_folder.filePath(u"wrong"_s), u"DNS:other.example"_s));
    }
    void cleanup() { QSslConfiguration::setDefaultConfiguration(m_usual); }

    void aCertificateIsHeldAgainstTheHost_data()
    {
        QTest::addColumn<QString>("certificate");
        QTest::addColumn<bool>("isTrusted");
        QTest::addColumn<bool>("works");
        QTest::newRow("trusted, of this host") << u"right"_s << true << true;
        QTest::newRow("signed by itself") << u"right"_s << false << false;
        QTest::newRow("trusted, of another host") << u"wrong"_s << true << false;
    }
    void aCertificateIsHeldAgainstTheHost()
    {
        QFETCH(QString, certificate);
        QFETCH(bool, isTrusted);
        QFETCH(bool, works);
        const auto file = m_folder.filePath(certificate);
        if (isTrusted)
            trust(file);
        BackendStage stage;
        QVERIFY(stage.server.start(file));
        stage.reset();
        stage.setBase(stage.server.base(u"https"_s));
        stage.setToken(u"abc"_s);
        for (const auto &answer : {stage.get(answerPath(200, "{}")), stage.post(answerPath(200, "{}"))}) {
            if (works)
                QVERIFY(answer == BackendAnswer(QJsonObject()));
            else
                QCOMPARE(transportCode(answer), int(QNetworkReply::SslHandshakeFailedError));
        }
        QCOMPARE(stage.server.requests().size(), works ? 2 : 0);
    }

    void fromHttpsToHttpIsNotFollowed()
    {
        const auto file = m_folder.filePath(u"right"_s);
        trust(file);
        BackendStage stage;
        QVERIFY(stage.server.start(file));
        stage.reset();
        stage.setBase(stage.server.base(u"https"_s));
        stage.setToken(u"abc"_s);
        const auto goal = (stage.server.base() + answerPath(200, "{}")).toLatin1();
        QVERIFY(stage.post(answerPath(307, "down", {"Location: " + goal})) ==
                BackendAnswer(refused(u"down"_s)));
        QCOMPARE(stage.server.requests().size(), 1);
    }

    void fromHttpToHttpsTheTokenStaysBehind()
    {
        const auto file = m_folder.filePath(u"right"_s);
        trust(file);
        BackendStage stage;
        QVERIFY(stage.server.start(file));
        stage.reset();
        stage.setToken(u"abc"_s);
        const auto goal = (stage.server.base(u"https"_s) + answerPath(200, "{}")).toLatin1();
        QVERIFY(stage.post(answerPath(307, "up", {"Location: " + goal})) == BackendAnswer(QJsonObject()));
        QCOMPARE(stage.server.requests().size(), 2);
        QVERIFY(!stage.server.requests()[1].contains("Authorization"));
    }
};

QUORVEL_TEST(TestNetworkBackendTls, QCoreApplication)
#include "tst_networkBackendTls.moc"
