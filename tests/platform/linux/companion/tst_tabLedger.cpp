#include "TabLedger.h"
#include "suite.h"

using namespace Qt::StringLiterals;
using Outcome = TabLedger::Outcome;

namespace {

/// Two windows of three tabs and one: 1 (10, 11, 12; 11 in front) and 2 (20 in front). 1 has the keyboard.
WindowsMessage twoWindows()
{
    return {{{1, 11, {{10, u"a"_s}, {11, u"b"_s}, {12, u"c"_s}}}, {2, 20, {{20, u"d"_s}}}}, 1};
}

TabLedger told(const WindowsMessage &windows = twoWindows())
{
    TabLedger ledger;
    ledger.apply(HelloMessage{1, true});
    ledger.apply(windows);
    return ledger;
}

std::vector<CompanionTab> manyTabs(qint64 first, std::size_t count)
{
    std::vector<CompanionTab> tabs;
    for (std::size_t place = 0; place < count; ++place)
        tabs.push_back({first + qint64(place), QString()});
    return tabs;
}

QString front(const TabLedger &ledger)
{
    return ledger.frontTab() ? ledger.frontTab()->url : u"none"_s;
}

/// The windows in short: "1:10,11*,12 2:20*".
QString layout(const TabLedger &ledger)
{
    QStringList windows;
    for (const auto &window : ledger.windows()) {
        QStringList tabs;
        for (const auto &tab : window.tabs)
            tabs << QString::number(tab.id) + (window.active == tab.id ? u"*"_s : QString());
        windows << QString::number(window.id) + u':' + tabs.join(u',');
    }
    return windows.join(u' ');
}

} // namespace

class tst_tabLedger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesWindows()
    {
        const auto ledger = told();
        QVERIFY(ledger.told() && ledger.seesPrivateWindows());
        QCOMPARE(layout(ledger), u"1:10,11*,12 2:20*"_s);
        QVERIFY(ledger.windows() == twoWindows().windows);
        QCOMPARE(ledger.tabCount(), std::size_t(4));
        QCOMPARE(front(ledger), u"b"_s);
    }

    void passesOverWhatComesBeforeItsTurn()
    {
        TabLedger ledger;
        QVERIFY(ledger.apply(twoWindows()) == Outcome::PassedOver);
        QVERIFY(ledger.apply(FocusMessage{1}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(HelloMessage{1, false}) == Outcome::List);
        QVERIFY(!ledger.told());
        QVERIFY(ledger.apply(WindowMessage{{1, {}, {}}}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(FocusMessage{1}) == Outcome::PassedOver);
        QVERIFY(ledger.windows().empty() && !ledger.focused());
        QVERIFY(ledger.apply(twoWindows()) == Outcome::List);
        QVERIFY(ledger.told());
    }

    void helloForgetsEverything()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(HelloMessage{1, false}) == Outcome::List);
        QVERIFY(!ledger.told() && !ledger.seesPrivateWindows());
        QVERIFY(ledger.windows().empty() && !ledger.focused() && !ledger.frontTab());
    }

    void windowsReplaceAll()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(WindowsMessage{{{3, {}, {{11, u"e"_s}}}}, {}}) == Outcome::List);
        QCOMPARE(layout(ledger), u"3:11"_s);
        QVERIFY(!ledger.focused());
    }

    void windowReplacesOneOrComesLast()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(WindowMessage{{1, 12, {{12, u"c"_s}, {13, u"f"_s}}}}) == Outcome::List);
        QCOMPARE(layout(ledger), u"1:12*,13 2:20*"_s);
        QVERIFY(ledger.apply(WindowMessage{{0, {}, {{30, u"g"_s}}}}) == Outcome::List);
        QCOMPARE(layout(ledger), u"1:12*,13 2:20* 0:30"_s);
    }

    void aTabToldOfElsewhereHasMoved()
    {
        auto ledger = told();
        ledger.apply(WindowMessage{{3, 11, {{11, u"b"_s}}}});
        QCOMPARE(layout(ledger), u"1:10,12 2:20* 3:11*"_s);
        ledger.apply(OpenedMessage{1, 0, {20, u"d"_s}});
        QCOMPARE(layout(ledger), u"1:20,10,12 2: 3:11*"_s);
        ledger.apply(OpenedMessage{1, 2, {20, u"d"_s}});
        QCOMPARE(layout(ledger), u"1:10,12,20 2: 3:11*"_s);
    }

    void windowGone()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(WindowGoneMessage{1}) == Outcome::List);
        QCOMPARE(layout(ledger), u"2:20*"_s);
        QVERIFY(!ledger.focused());
        QVERIFY(ledger.apply(WindowGoneMessage{1}) == Outcome::PassedOver);
    }

    void focus()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(FocusMessage{2}) == Outcome::Front);
        QCOMPARE(front(ledger), u"d"_s);
        QVERIFY(ledger.apply(FocusMessage{}) == Outcome::Front);
        QCOMPARE(front(ledger), u"none"_s);
    }

    void aFocusedWindowThatIsNotKnownLeavesNoneOfTheOthersInFront()
    {
        auto ledger = told();
        ledger.apply(FocusMessage{3});
        QCOMPARE(front(ledger), u"none"_s);
        ledger.apply(WindowMessage{{3, 30, {{30, u"new"_s}}}});
        QCOMPARE(front(ledger), u"new"_s);
    }

    void opened_data()
    {
        QTest::addColumn<qint64>("index");
        QTest::addColumn<QString>("after");
        QTest::newRow("first") << qint64(0) << u"1:13,10,11*,12 2:20*"_s;
        QTest::newRow("between") << qint64(2) << u"1:10,11*,13,12 2:20*"_s;
        QTest::newRow("last") << qint64(3) << u"1:10,11*,12,13 2:20*"_s;
        QTest::newRow("beyond") << (qint64(1) << 53) - 1 << u"1:10,11*,12,13 2:20*"_s;
    }
    void opened()
    {
        QFETCH(qint64, index);
        auto ledger = told();
        QVERIFY(ledger.apply(OpenedMessage{1, index, {13, u"n"_s}}) == Outcome::List);
        QTEST(layout(ledger), "after");
    }

    void addressActiveAndGone()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(AddressMessage{{11, u"new"_s}}) == Outcome::List);
        QCOMPARE(front(ledger), u"new"_s);
        QVERIFY(ledger.apply(ActiveMessage{1, 12}) == Outcome::Front);
        QCOMPARE(front(ledger), u"c"_s);
        QVERIFY(ledger.apply(GoneMessage{12}) == Outcome::List);
        QCOMPARE(layout(ledger), u"1:10,11 2:20*"_s);
        QCOMPARE(front(ledger), u"none"_s);
    }

    void passesOverWhatIsNotKnown()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(OpenedMessage{9, 0, {13, QString()}}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(OpenedMessage{9, 0, {10, QString()}}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(AddressMessage{{99, u"x"_s}}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(ActiveMessage{9, 10}) == Outcome::PassedOver);
        QVERIFY(ledger.apply(ActiveMessage{2, 10}) == Outcome::PassedOver); // another window's
        QVERIFY(ledger.apply(GoneMessage{99}) == Outcome::PassedOver);
        QVERIFY(ledger.windows() == twoWindows().windows);
        QCOMPARE(front(ledger), u"b"_s);
    }

    void anActiveTabIsOneOfItsWindow()
    {
        auto ledger = told({{{1, 99, {{10, u"a"_s}}}}, 1});
        QCOMPARE(layout(ledger), u"1:10"_s);
        ledger.apply(WindowMessage{{1, 99, {{10, u"a"_s}}}});
        QCOMPARE(layout(ledger), u"1:10"_s);
        QVERIFY(!ledger.frontTab());
    }

    void twiceTheSameBreaksIt()
    {
        auto ledger = told();
        QVERIFY(ledger.apply(WindowsMessage{{{1, {}, {}}, {1, {}, {}}}, {}}) == Outcome::Broken);
        QVERIFY(ledger.apply(WindowsMessage{{{1, {}, {{5, {}}}}, {2, {}, {{5, {}}}}}, {}}) ==
                Outcome::Broken);
        QVERIFY(ledger.apply(WindowMessage{{1, {}, {{5, {}}, {5, {}}}}}) == Outcome::Broken);
        QVERIFY(ledger.windows() == twoWindows().windows);
    }

    void boundsWindows()
    {
        WindowsMessage message;
        for (qint64 id = 0; id < qint64(mostWindows); ++id)
            message.windows.push_back({id, {}, {}});
        auto ledger = told(message);
        QCOMPARE(ledger.windows().size(), mostWindows);
        QVERIFY(ledger.apply(WindowMessage{{5000, {}, {}}}) == Outcome::Broken);
        QVERIFY(ledger.apply(WindowMessage{{5, {}, {}}}) == Outcome::List);
        message.windows.push_back({5000, {}, {}});
        QVERIFY(ledger.apply(message) == Outcome::Broken);
        QCOMPARE(ledger.windows().size(), mostWindows);
    }

    void boundsTabs()
    {
        const qint64 half = mostTabs / 2;
        WindowsMessage message{{{1, {}, manyTabs(0, mostTabs / 2)}, {2, {}, manyTabs(half, mostTabs / 2)}},
                               {}};
        auto ledger = told(message);
        QCOMPARE(ledger.tabCount(), mostTabs);
        const qint64 further = mostTabs;
        QVERIFY(ledger.apply(OpenedMessage{1, 0, {further, {}}}) == Outcome::Broken);
        QVERIFY(ledger.apply(WindowMessage{{3, {}, {{further, {}}}}}) == Outcome::Broken);
        QVERIFY(ledger.apply(WindowMessage{{1, {}, manyTabs(further, mostTabs / 2 + 1)}}) == Outcome::Broken);
        // What moves or is replaced does not count twice.
        QVERIFY(ledger.apply(OpenedMessage{1, 0, {half, {}}}) == Outcome::List);
        QVERIFY(ledger.apply(WindowMessage{{2, {}, manyTabs(further, mostTabs / 2 - 1)}}) == Outcome::List);
        QVERIFY(ledger.apply(WindowMessage{{3, {}, manyTabs(0, mostTabs / 2)}}) == Outcome::List);
        QCOMPARE(ledger.tabCount(), mostTabs);
        message.windows[0].tabs.push_back({further, {}});
        QVERIFY(ledger.apply(message) == Outcome::Broken);
    }
};

QUORVEL_TEST(tst_tabLedger)
#include "tst_tabLedger.moc"
