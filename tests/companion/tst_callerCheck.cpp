#include "callerCheck.h"
#include "companionIdentity.h"
#include "suite.h"

#include <string>

class tst_callerCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knowsOurExtension()
    {
        QVERIFY(startedForOurExtension({m_chromium}));
        QVERIFY(startedForOurExtension({m_chromium, "--parent-window=0"}));
        QVERIFY(startedForOurExtension({m_chromium, "--parent-window=17", "--whatever"}));
        QVERIFY(startedForOurExtension({m_manifest, firefoxExtensionId}));
    }

    void knowsNobodyElse_data()
    {
        QTest::addColumn<QList<std::string>>("arguments");
        const auto row = [](const char *name, const QList<std::string> &arguments) {
            QTest::newRow(name) << arguments;
        };
        const std::string chromiumId = chromiumExtensionId;
        row("nobody", {});
        row("empty", {""});
        row("no slash at the end", {"chrome-extension://" + chromiumId});
        row("more after it", {m_chromium + "x"});
        row("a page of it", {m_chromium + "page.html"});
        row("another scheme", {"moz-extension://" + chromiumId + "/"});
        row("a longer id", {"chrome-extension://" + chromiumId + "a/"});
        row("a shorter id", {"chrome-extension://" + chromiumId.substr(1) + "/"});
        row("capital letters", {"CHROME-EXTENSION://" + chromiumId + "/"});
        row("Firefox's id as an origin", {std::string("chrome-extension://") + firefoxExtensionId + "/"});
        row("ours comes second", {"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/", m_chromium});
        row("another's origin with our id",
            {"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/", firefoxExtensionId});
        row("no id", {m_manifest});
        row("another add-on", {m_manifest, "other@example.org"});
        row("Chromium's id in Firefox", {m_manifest, chromiumId});
        row("a relative manifest", {"host.json", firefoxExtensionId});
        row("one too many", {m_manifest, firefoxExtensionId, "x"});
        row("the other way round", {firefoxExtensionId, m_manifest});
    }

    void knowsNobodyElse()
    {
        QFETCH(QList<std::string>, arguments);
        QVERIFY(!startedForOurExtension({arguments.begin(), arguments.end()}));
    }

private:
    const std::string m_chromium = std::string("chrome-extension://") + chromiumExtensionId + "/";
    const std::string m_manifest = "/usr/lib/mozilla/native-messaging-hosts/org.quorvel.companion.json";
};

QUORVEL_TEST(tst_callerCheck)
#include "tst_callerCheck.moc"
