#include "companionMessages.h"
#include "frames.h"
#include "suite.h"

#include <functional>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using Json = nlohmann::json;

namespace {

constexpr qint64 largest = (qint64(1) << 53) - 1;

struct Sample
{
    const char *name;
    const char *text;
    CompanionMessage message;
};

/// One correct message of each type, with all that can be in it.
std::vector<Sample> samples()
{
    return {
        {"hello", R"({"type":"hello","protocol":1,"version":"1.2","privateWindows":true})",
         HelloMessage{1, true}},
        {"windows",
         R"({"type":"windows","windows":[{"id":7,"active":11,"tabs":[{"id":10,"url":"https://a.example/"},)"
         R"({"id":11,"url":""}]},{"id":8,"active":null,"tabs":[]}],"focused":7})",
         WindowsMessage{{{7, 11, {{10, u"https://a.example/"_s}, {11, QString()}}}, {8, {}, {}}}, 7}},
        {"window", R"({"type":"window","window":{"id":0,"active":1,"tabs":[{"id":1,"url":"x"}]}})",
         WindowMessage{{0, 1, {{1, u"x"_s}}}}},
        {"windowGone", R"({"type":"windowGone","window":9007199254740991})", WindowGoneMessage{largest}},
        {"focus", R"({"type":"focus","window":7})", FocusMessage{7}},
        {"opened", R"({"type":"opened","window":7,"index":3,"tab":{"id":12,"url":"о"}})",
         OpenedMessage{7, 3, {12, u"о"_s}}},
        {"address", R"({"type":"address","tab":12,"url":"b"})", AddressMessage{{12, u"b"_s}}},
        {"active", R"({"type":"active","window":7,"tab":12})", ActiveMessage{7, 12}},
        {"gone", R"({"type":"gone","tab":12})", GoneMessage{12}},
    };
}

bool decodes(const Json &json)
{
    return decodeCompanionMessage(json.dump()).ok();
}

/// Calls `visit` with each object in the message, outer ones first, each of which it may change.
void forEachObject(Json &at, const std::function<void(Json &)> &visit)
{
    if (at.is_object())
        visit(at);
    for (auto &element : at) {
        if (element.is_structured())
            forEachObject(element, visit);
    }
}

} // namespace

class tst_companionMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesEachMessage_data() { rows(); }
    void takesEachMessage()
    {
        const auto decoded = decodeCompanionMessage(sample().text);
        QVERIFY2(decoded.ok(), decoded ? "" : qPrintable(decoded.reason()));
        QVERIFY(decoded.value() == sample().message);
    }

    void takesNullWhereNothingIsMeant()
    {
        const auto focus = decodeCompanionMessage(R"({"type":"focus","window":null})");
        QVERIFY(focus.ok() && focus.value() == CompanionMessage(FocusMessage{}));
        const auto windows = decodeCompanionMessage(R"({"type":"windows","windows":[],"focused":null})");
        QVERIFY(windows.ok() && windows.value() == CompanionMessage(WindowsMessage{}));
    }

    void needsEveryKey_data() { rows(); }
    void needsEveryKey()
    {
        auto root = Json::parse(sample().text);
        int tried = 0;
        forEachObject(root, [&](Json &object) {
            const Json whole = object;
            for (const auto &[key, value] : whole.items()) {
                object.erase(key);
                QVERIFY2(!decodes(root), root.dump().c_str());
                object = whole;
                ++tried;
            }
        });
        QVERIFY(tried >= 2 && decodes(root));
    }

    void takesNoKeyMore_data() { rows(); }
    void takesNoKeyMore()
    {
        auto root = Json::parse(sample().text);
        forEachObject(root, [&](Json &object) {
            object["more"] = 1;
            QVERIFY2(!decodes(root), root.dump().c_str());
            object.erase("more");
        });
        QVERIFY(decodes(root));
    }

    void takesNoKeyTwice_data() { rows(); }
    void takesNoKeyTwice()
    {
        // Each key is written once more, with its own value, right before itself.
        const std::string text = sample().text;
        int tried = 0;
        for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at + 1)) {
            const auto end = text.find('"', at + 1);
            const bool isKey = end != std::string::npos && text.compare(end, 2, "\":") == 0;
            if (isKey) {
                auto twice = text;
                twice.insert(at, text.substr(at, end - at + 1) + ":null,");
                const auto decoded = decodeCompanionMessage(twice);
                QVERIFY2(!decoded.ok(), twice.c_str());
                QCOMPARE(decoded.reason(), u"has a key twice"_s);
                ++tried;
            }
            at = end;
        }
        QVERIFY(tried >= 2);
    }

    void wantsEachValueOfItsType_data() { rows(); }
    void wantsEachValueOfItsType()
    {
        const std::vector<Json> others{
            nullptr,         true, -1, 1.0, 1.5, largest + 1, "text", Json::array(), Json::object(),
            Json::array({1})};
        auto root = Json::parse(sample().text);
        forEachObject(root, [&](Json &object) {
            const Json whole = object;
            for (const auto &[key, value] : whole.items()) {
                for (const auto &other : others) {
                    const bool mayBeNull =
                        key == "active" || key == "focused" || (key == "window" && whole["type"] == "focus");
                    const bool emptyList = other.is_array() && other.empty() && value.is_array();
                    const bool right = (other.is_null() && mayBeNull) || emptyList ||
                                       (other.is_string() && value.is_string() && key != "type") ||
                                       (other.is_boolean() && value.is_boolean());
                    object[key] = other;
                    QVERIFY2(decodes(root) == right, root.dump().c_str());
                }
                object = whole;
            }
        });
    }

    void takesNoOtherText_data()
    {
        QTest::addColumn<QByteArray>("text");
        const QByteArray gone = R"({"type":"gone","tab":1})";
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("cut off") << gone.chopped(1);
        QTest::newRow("more after it") << gone + "{}";
        QTest::newRow("zero byte after it") << gone + '\0' + "{";
        QTest::newRow("byte order mark") << "\xEF\xBB\xBF" + gone;
        QTest::newRow("a list") << '[' + gone + ']';
        QTest::newRow("a text") << QByteArray(R"("gone")");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("comment") << gone + "/**/";
        QTest::newRow("not UTF-8") << QByteArray("{\"type\":\"address\",\"tab\":1,\"url\":\"\xFF\"}");
        QTest::newRow("half a pair") << QByteArray(R"({"type":"address","tab":1,"url":"\ud800"})");
        QTest::newRow("unknown type") << QByteArray(R"({"type":"moved","tab":1})");
        QTest::newRow("an order to close") << QByteArray(R"({"type":"close","tabs":[]})");
        QTest::newRow("fraction") << QByteArray(R"({"type":"gone","tab":1.0})");
        QTest::newRow("power") << QByteArray(R"({"type":"gone","tab":1e2})");
        QTest::newRow("minus zero") << QByteArray(R"({"type":"gone","tab":-0})");
        QTest::newRow("beyond 2^53 - 1") << QByteArray(R"({"type":"gone","tab":9007199254740992})");
        QTest::newRow("beyond 64 bits") << QByteArray(R"({"type":"gone","tab":18446744073709551617})");
        QTest::newRow("number beyond all") << QByteArray(R"({"type":"gone","tab":1e999})");
        QTest::newRow("deep") << QByteArray(R"({"type":"gone","tab":)") + QByteArray(2000000, '[');
    }
    void takesNoOtherText()
    {
        QFETCH(QByteArray, text);
        const auto decoded = decodeCompanionMessage({text.constData(), std::size_t(text.size())});
        QVERIFY(!decoded.ok());
        QVERIFY(!decoded.reason().isEmpty());
    }

    void boundsNesting()
    {
        const auto decoded = decodeCompanionMessage(R"({"type":"gone","tab":1,"a":[{"b":[{"c":[1]}]}]})");
        QVERIFY(!decoded.ok());
        QCOMPARE(decoded.reason(), u"is nested too deeply"_s);
    }

    void boundsAddresses()
    {
        // Counted in UTF-16 units: this character takes two of them, and four bytes.
        const auto text = [](qsizetype pairs) {
            return Json{{"type", "address"}, {"tab", 1}, {"url", u"😀"_s.repeated(pairs).toStdString()}}
                .dump();
        };
        QVERIFY(decodeCompanionMessage(text(512)).ok());
        const auto tooLong = decodeCompanionMessage(text(513));
        QVERIFY(!tooLong.ok());
        QCOMPARE(tooLong.reason(), u"address url is too long"_s);
    }

    void boundsLists()
    {
        auto windows = Json::parse(R"({"type":"windows","windows":[],"focused":null})");
        for (std::size_t id = 0; id < mostWindows; ++id)
            windows["windows"].push_back({{"id", id}, {"active", nullptr}, {"tabs", Json::array()}});
        QVERIFY(decodes(windows));
        windows["windows"].push_back({{"id", mostWindows}, {"active", nullptr}, {"tabs", Json::array()}});
        QVERIFY(!decodes(windows));

        auto window = Json::parse(R"({"type":"window","window":{"id":1,"active":null,"tabs":[]}})");
        for (std::size_t id = 0; id < mostTabs; ++id)
            window["window"]["tabs"].push_back({{"id", id}, {"url", ""}});
        QVERIFY(decodes(window));
        window["window"]["tabs"].push_back({{"id", mostTabs}, {"url", ""}});
        QVERIFY(!decodes(window));
    }

    void reasonsNameNoAddress_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("range") << QByteArray(R"({"type":"address","tab":-1,"url":"secret.example"})");
        QTest::newRow("list") << QByteArray(R"({"type":"address","tab":1,"url":["secret.example"]})");
        QTest::newRow("type") << QByteArray(R"({"type":"secret.example","tab":1})");
        QTest::newRow("key") << QByteArray(R"({"type":"gone","tab":1,"secret.example":1})");
        QTest::newRow("no JSON") << QByteArray(R"({"type":"address","tab":1,"url":"secret.example\q"})");
    }
    void reasonsNameNoAddress()
    {
        QFETCH(QByteArray, text);
        const auto decoded = decodeCompanionMessage({text.constData(), std::size_t(text.size())});
        QVERIFY(!decoded.ok());
        QVERIFY2(!decoded.reason().contains(u"secret"), qPrintable(decoded.reason()));
    }

    void saysWelcome()
    {
        QVERIFY(Json::parse(encodeWelcome()) == Json::parse(R"({"type":"welcome","protocol":1})"));
    }

    void ordersToClose()
    {
        QVERIFY(encodeClose({}).empty());
        const auto orders = encodeClose({{12, u"https://ж.example/\"a\"\n"_s}, {3, QString()}});
        QCOMPARE(orders.size(), std::size_t(1));
        const auto expected =
            Json{{"type", "close"},
                 {"tabs", {{{"id", 12}, {"url", "https://ж.example/\"a\"\n"}}, {{"id", 3}, {"url", ""}}}}};
        QVERIFY2(Json::parse(orders[0]) == expected, orders[0].c_str());
    }

    void splitsLongOrders()
    {
        // Characters that take the most bytes there are.
        std::vector<CompanionTab> tabs;
        for (qint64 id = 0; id < 201; ++id)
            tabs.push_back({largest - id, QString(longestAddress, QChar(1))});
        const auto orders = encodeClose(tabs);
        QCOMPARE(orders.size(), std::size_t(3));
        std::vector<CompanionTab> sent;
        for (const auto &order : orders) {
            QVERIFY(order.size() <= longestFrameToBrowser);
            const auto json = Json::parse(order);
            QVERIFY(json["tabs"].size() <= mostTabsInOneClose);
            for (const auto &tab : json["tabs"])
                sent.push_back(
                    {tab["id"].get<qint64>(), QString::fromStdString(tab["url"].get<std::string>())});
        }
        QVERIFY(sent == tabs);
    }

    void halfAPairInAnOrderIsNoObstacle()
    {
        const auto orders = encodeClose({{1, QString(QChar(0xD83D))}});
        QCOMPARE(orders.size(), std::size_t(1));
        QVERIFY(Json::accept(orders[0]));
    }

private:
    static void rows()
    {
        QTest::addColumn<int>("row");
        int row = 0;
        for (const auto &each : samples())
            QTest::newRow(each.name) << row++;
    }
    static Sample sample()
    {
        QFETCH(int, row);
        return samples()[std::size_t(row)];
    }
};

QUORVEL_TEST(tst_companionMessages)
#include "tst_companionMessages.moc"
