#include "CompanionScripting.h"
#include "CompanionStage.h"
#include "suite.h"

using namespace Qt::StringLiterals;

namespace {

const auto chromium = u"Chromium"_s;

/// Window 1 with the tabs 10 (a), 11 (no address) and 12 (c), and window 2 with 20 (d).
const auto listOfTwoWindows =
    json("[{'id':1,'active':10,'tabs':[{'id':10,'url':'a'},{'id':11,'url':''},"
         "{'id':12,'url':'c'}]},{'id':2,'active':20,'tabs':[{'id':20,'url':'d'}]}]");
/// The same numbers in another profile.
const auto anotherProfile = json("[{'id':1,'active':10,'tabs':[{'id':10,'url':'x'},{'id':12,'url':'c'}]}]");

} // namespace

class tst_companionScripting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void worksWhileListening()
    {
        CompanionStage stage;
        QCOMPARE(CompanionScripting(stage.server).availability(), Availability::working());
        CompanionServer nowhere("/nowhere/at/all");
        QVERIFY(!nowhere.listen().ok());
        const auto missing = CompanionScripting(nowhere).availability();
        QVERIFY(!missing.works && !missing.reasonEnglish.isEmpty() && !missing.reasonRussian.isEmpty());
        QVERIFY(missing.reasonEnglish != missing.reasonRussian);
    }

    void numbersThroughAllProfiles()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        const auto first = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows);
        const auto firefox = stage.connectAndTell(CompanionStage::firefox, anotherProfile);
        const auto second = stage.connectAndTell(CompanionStage::chromium, anotherProfile);
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(5));
        const std::vector<BrowserTab> expected{{chromium, 1, 1, u"a"_s},
                                               {chromium, 1, 3, u"c"_s},
                                               {chromium, 2, 1, u"d"_s},
                                               {chromium, 3, 1, u"x"_s},
                                               {chromium, 3, 2, u"c"_s}};
        QVERIFY(scripting.allTabs(chromium) == expected);
        QTRY_COMPARE(scripting.allTabs(u"Firefox"_s).size(), std::size_t(2));

        first->socket().disconnectFromServer();
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(2));
        QCOMPARE(scripting.allTabs(chromium)[0].windowIndex, qint64(1));
    }

    void theLatestClaimOfTheKeyboardCounts()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        const auto front = [&] { return scripting.frontTabURL(chromium).value_or(u"none"_s); };
        const auto first = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows, "1");
        QTRY_COMPARE(front(), u"a"_s);
        const auto second = stage.connectAndTell(CompanionStage::chromium, anotherProfile, "1");
        QTRY_COMPARE(front(), u"x"_s);
        first->send(json("{'type':'focus','window':2}"));
        QTRY_COMPARE(front(), u"d"_s);
        second->send(json("{'type':'focus','window':1}"));
        QTRY_COMPARE(front(), u"x"_s);
        second->send(json("{'type':'focus','window':null}")); // the first has not taken its claim back
        QTRY_COMPARE(front(), u"d"_s);
        first->send(json("{'type':'focus','window':99}")); // a window that is not known
        QTRY_COMPARE(front(), u"none"_s);
        second->send(json("{'type':'focus','window':1}"));
        QTRY_COMPARE(front(), u"x"_s);
        second->socket().disconnectFromServer();
        QTRY_COMPARE(front(), u"none"_s);
    }

    void closesByNumberAndAddress()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        const auto first = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows);
        const auto second = stage.connectAndTell(CompanionStage::chromium, anotherProfile);
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(5));
        scripting.closeTabs(chromium, {{chromium, 3, 2, u"c"_s},    // the second's 12
                                       {chromium, 2, 1, u"d"_s},    // the first's 20
                                       {chromium, 1, 2, QString()}, // without an address
                                       {chromium, 1, 1, u"old"_s},  // moved on
                                       {u"Opera"_s, 1, 1, u"a"_s},  // another browser's
                                       {chromium, 4, 1, u"a"_s},    // nobody's
                                       {chromium, 1, 3, u"c"_s}});  // the first's 12
        const auto toFirst =
            nlohmann::json::parse(json("{'type':'close','tabs':[{'id':20,'url':'d'},{'id':12,'url':'c'}]}"));
        const auto toSecond = nlohmann::json::parse(json("{'type':'close','tabs':[{'id':12,'url':'c'}]}"));
        QVERIFY(first->next() == toFirst);
        QVERIFY(second->next() == toSecond);
        QVERIFY(!first->hasNext() && !second->hasNext());
        QCOMPARE(scripting.allTabs(chromium).size(), std::size_t(5)); // until the browser says so
    }

    void longOrdersAreSplit()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        QByteArray tabs;
        for (int id = 0; id < 250; ++id)
            tabs += json("{'id':") + QByteArray::number(id) + json(",'url':'u'},");
        const auto client = stage.connectAndTell(
            CompanionStage::chromium, json("[{'id':1,'active':0,'tabs':[") + tabs.chopped(1) + "]}]");
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(250));
        auto order = scripting.allTabs(chromium);
        std::reverse(order.begin(), order.end());
        scripting.closeTabs(chromium, order);
        qint64 expected = 249;
        for (const std::size_t count : {100U, 100U, 50U}) {
            const auto message = client->next();
            QCOMPARE(message["tabs"].size(), count);
            for (const auto &tab : message["tabs"])
                QCOMPARE(tab["id"].get<qint64>(), expected--);
        }
    }

    void everyMessageShowsInTheList_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("after");
        const auto none = QString();
        QTest::newRow("hello") << json("{'type':'hello','protocol':1,'version':'1','privateWindows':true}")
                               << none;
        QTest::newRow("windows") << json("{'type':'windows','windows':[],'focused':null}") << none;
        QTest::newRow("window") << json("{'type':'window','window':{'id':3,'active':null,'tabs':["
                                        "{'id':30,'url':'e'}]}}")
                                << u"1.1a 1.3c 2.1d 3.1e"_s;
        QTest::newRow("windowGone") << json("{'type':'windowGone','window':1}") << u"1.1d"_s;
        QTest::newRow("opened") << json("{'type':'opened','window':1,'index':0,'tab':{'id':13,'url':'n'}}")
                                << u"1.1n 1.2a 1.4c 2.1d"_s;
        QTest::newRow("address") << json("{'type':'address','tab':11,'url':'b'}") << u"1.1a 1.2b 1.3c 2.1d"_s;
        QTest::newRow("gone") << json("{'type':'gone','tab':10}") << u"1.2c 2.1d"_s;
    }
    void everyMessageShowsInTheList()
    {
        QFETCH(QByteArray, message);
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        const auto list = [&] {
            QStringList tabs;
            for (const auto &tab : scripting.allTabs(chromium))
                tabs << u"%1.%2%3"_s.arg(tab.windowIndex).arg(tab.tabIndex).arg(tab.url);
            return tabs.join(u' ');
        };
        const auto client = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows);
        QTRY_COMPARE(list(), u"1.1a 1.3c 2.1d"_s);
        client->send(message);
        QFETCH(QString, after);
        QTRY_COMPARE(list(), after);
    }

    void theListIsKeptWhileNothingChanges()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        const auto client = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows);
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(3));
        const auto before = stage.server.revision(chromium);
        client->send(json("{'type':'active','window':1,'tab':12}"));
        client->send(json("{'type':'focus','window':1}"));
        QTRY_COMPARE(scripting.frontTabURL(chromium).value_or(QString()), u"c"_s);
        QCOMPARE(stage.server.revision(chromium), before);
        const auto first = scripting.allTabs(chromium);
        QVERIFY(first[0].url.isSharedWith(scripting.allTabs(chromium)[0].url)); // not made anew
        QVERIFY(first == scripting.allTabs(chromium));
    }

    void tellsFurtherBrowsers()
    {
        CompanionStage stage;
        CompanionScripting scripting(stage.server);
        QVERIFY(scripting.furtherBrowsers().empty());
        const auto supported = stage.connectAndTell(CompanionStage::chromium, listOfTwoWindows);
        const auto silent = stage.connect(CompanionStage::firefox);
        QTRY_COMPARE(scripting.allTabs(chromium).size(), std::size_t(3));
        QVERIFY(scripting.furtherBrowsers().empty());
        silent->tell(listOfTwoWindows);
        QTRY_VERIFY(scripting.furtherBrowsers() == std::vector<QString>{u"Firefox"_s});
        silent->socket().disconnectFromServer();
        QTRY_VERIFY(scripting.furtherBrowsers().empty());
    }
};

QUORVEL_TEST(tst_companionScripting, QCoreApplication)
#include "tst_companionScripting.moc"
