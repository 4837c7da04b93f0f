#include "browserNames.h"
#include "suite.h"

using namespace Qt::StringLiterals;

class TestBrowserNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("name"); // empty: its own
        QTest::newRow("chrome") << u"google-chrome"_s << QString() << u"Google Chrome"_s;
        QTest::newRow("chrome flatpak") << u"com.google.Chrome"_s << QString() << u"Google Chrome"_s;
        QTest::newRow("brave") << u"brave-browser"_s << QString() << u"Brave Browser"_s;
        QTest::newRow("brave flatpak") << u"com.brave.Browser"_s << QString() << u"Brave Browser"_s;
        QTest::newRow("edge") << u"microsoft-edge"_s << QString() << u"Microsoft Edge"_s;
        QTest::newRow("edge flatpak") << u"com.microsoft.Edge"_s << QString() << u"Microsoft Edge"_s;
        QTest::newRow("chromium") << u"chromium"_s << u"/usr/lib/chromium/chromium"_s << u"Chromium"_s;
        QTest::newRow("chromium flatpak") << u"org.chromium.Chromium"_s << QString() << u"Chromium"_s;
        QTest::newRow("opera") << u"opera"_s << QString() << u"Opera"_s;
        QTest::newRow("opera flatpak") << u"com.opera.Opera"_s << QString() << u"Opera"_s;
        QTest::newRow("program alone") << QString() << u"/opt/google/chrome/chrome"_s << u"Google Chrome"_s;
        QTest::newRow("edge's program")
            << QString() << u"/opt/microsoft/msedge/msedge"_s << u"Microsoft Edge"_s;
        QTest::newRow("edge dev's program")
            << QString() << u"/opt/microsoft/msedge-dev/msedge"_s << QString();
        QTest::newRow("chrome beta") << u"google-chrome-beta"_s << u"/opt/google/chrome-beta/chrome"_s
                                     << QString();
        QTest::newRow("chrome dev flatpak") << u"com.google.ChromeDev"_s << QString() << QString();
        QTest::newRow("brave nightly") << u"brave-browser-nightly"_s << QString() << QString();
        QTest::newRow("edge dev") << u"microsoft-edge-dev"_s << QString() << QString();
        QTest::newRow("opera developer") << u"opera-developer"_s << QString() << QString();
        QTest::newRow("web application")
            << u"chrome-abcdef-Default"_s << u"/opt/google/chrome/chrome"_s << QString();
        QTest::newRow("firefox") << u"firefox-esr"_s << u"/usr/lib/firefox-esr/firefox-esr"_s << QString();
        QTest::newRow("nothing") << QString() << QString() << QString();
    }
    void names()
    {
        QFETCH(QString, id);
        QFETCH(QString, executable);
        const auto name = supportedBrowserName(id, executable).value_or(QString());
        QTEST(name, "name");
        QVERIFY2(name.isEmpty() || isSupportedBrowserName(name), "one of the seven that are looked at");
    }

    void furtherNames_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("name"); // empty: none
        const auto none = QString();
        const auto firefox = u"Firefox"_s;
        QTest::newRow("debian") << u"firefox-esr"_s << u"/usr/lib/firefox-esr/firefox-esr"_s << firefox;
        QTest::newRow("distribution") << u"firefox"_s << none << firefox;
        QTest::newRow("flatpak") << u"org.mozilla.firefox"_s << u"/app/lib/firefox/firefox-bin"_s << firefox;
        QTest::newRow("snap") << u"firefox_firefox"_s << none << firefox;
        QTest::newRow("program alone") << none << u"/usr/lib/firefox-esr/firefox-esr"_s << firefox;
        QTest::newRow("unpacked") << none << u"/home/me/firefox/firefox-bin"_s << firefox;
        QTest::newRow("unpacked, newer") << none << u"/opt/firefox/firefox"_s << firefox;
        QTest::newRow("esr") << none << u"/usr/lib/firefox-esr/firefox"_s << firefox;
        QTest::newRow("beta") << none << u"/usr/lib/firefox-beta/firefox-bin"_s << none;
        QTest::newRow("developer") << u"firefox-devedition"_s << u"/usr/lib/firefox/firefox"_s << none;
        QTest::newRow("nightly") << u"firefox-nightly"_s << none << none;
        QTest::newRow("thunderbird") << none << u"/usr/lib/thunderbird/thunderbird"_s << none;
        QTest::newRow("chromium") << u"chromium"_s << u"/usr/lib/chromium/chromium"_s << none;
        QTest::newRow("nothing") << none << none << none;
    }
    void furtherNames()
    {
        QFETCH(QString, id);
        QFETCH(QString, executable);
        QTEST(furtherBrowserName(id, executable).value_or(QString()), "name");
    }

    void sevenNames()
    {
        for (const auto &name : {u"Safari"_s, u"Google Chrome"_s, u"Brave Browser"_s, u"Microsoft Edge"_s,
                                 u"Arc"_s, u"Chromium"_s, u"Opera"_s})
            QVERIFY2(isSupportedBrowserName(name), qPrintable(name));
        for (const auto &name : {u"Firefox"_s, u"chromium"_s, QString()})
            QVERIFY2(!isSupportedBrowserName(name), qPrintable(name));
    }
};

QUORVEL_TEST(TestBrowserNames, QCoreApplication)
#include "tst_browserNames.moc"
