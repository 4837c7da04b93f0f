#include "BrowserChecks.h"

#include "BlockingEngine.h"
#include "BrowserInspector.h"
#include "patience.h"
#include "supportedBrowsers.h"

#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QString base = u"http://base.test/remote"_s;
const QString baseLine = u"1-1 http://base.test/remote"_s;

/// The extension calls a relay that has ended again within half a minute, and then it has to start.
constexpr int patienceForRelay = 60'000;

} // namespace

void BrowserChecks::initTestCase()
{
    m_stage = std::make_unique<BrowserStage>();
    QVERIFY2(m_stage->works(), "Xvfb, openbox, xdotool and dbus-daemon are needed");
    m_program = std::make_unique<CompanionEnd>(m_stage->programFolder());
    QVERIFY(m_program->works());
    const auto extensions = m_kind == RealBrowser::Kind::Firefox
                                ? QStringLiteral(QUORVEL_EXTENSION)
                                : QStringLiteral(QUORVEL_EXTENSION "," QUORVEL_HAND);
    m_browser = std::make_unique<RealBrowser>(m_kind, *m_stage, extensions, QStringLiteral(QUORVEL_RELAY));
    m_hand = std::make_unique<PointerAndKeys>(m_stage->desktop());
}

void BrowserChecks::init()
{
    // A browser that a check has left without its first tab begins anew.
    if (!m_browser->processes().runs() || !shows(base)) {
        m_browser->processes().kill();
        TRY_COMPARE(tabs(), QStringList());
        QVERIFY(m_browser->start({base}));
        TRY_VERIFY(shows(base));
    }
    QStringList others;
    for (const auto &tab : m_program->scripting().allTabs(m_browser->name())) {
        if (tab.url != base)
            others.append(tab.url);
    }
    close(others);
    TRY_COMPARE(tabs(), QStringList(baseLine));
}

void BrowserChecks::cleanupTestCase()
{
    if (!m_browser)
        return;
    m_browser->processes().kill();
    QVERIFY(m_browser->processes().members().empty());
}

bool BrowserChecks::shows(const QString &url)
{
    const auto all = m_program->scripting().allTabs(m_browser->name());
    return std::any_of(all.begin(), all.end(), [&](const BrowserTab &tab) { return tab.url == url; });
}

/// Closes the tabs that show one of the addresses, as the engine does.
void BrowserChecks::close(const QStringList &urls)
{
    const BrowserInspector inspector(m_program->scripting());
    auto chosen = inspector.allTabs(m_browser->name());
    std::erase_if(chosen, [&](const BrowserTab &tab) { return !urls.contains(tab.url); });
    inspector.closeTabs(chosen, m_browser->name());
}

/// One look of an engine that blocks these; gives its event.
QString BrowserChecks::look(const QStringList &blockedDomains)
{
    // A browser that is not among the supported ones has no application here: it is found without.
    const auto running =
        supportedBrowsers().contains(m_browser->name()) ? QStringList(m_browser->name()) : QStringList();
    return BlockingEngine(m_program->scripting(), running, blockedDomains).look();
}

std::vector<pid_t> BrowserChecks::relays() const
{
    auto found = m_browser->processes().members();
    std::erase_if(found, [](pid_t id) {
        return QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(id)) != QStringLiteral(QUORVEL_RELAY);
    });
    return found;
}

void BrowserChecks::listsWindowsAndTabsByNumber()
{
    m_browser->open({u"http://a.test/"_s, u"http://b.test/?q=%zz|{}#x"_s});
    TRY_COMPARE(tabs().size(), 3);
    m_browser->openWindow(u"http://c.test/"_s);
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://a.test/"_s, u"1-3 http://b.test/?q=%zz|{}#x"_s,
                                     u"2-1 http://c.test/"_s}));
}

void BrowserChecks::frontTabFollowsTheKeyboard()
{
    if (!m_browser->hasWindows())
        QSKIP("without windows there is no keyboard to follow");
    const auto front = [this] { return m_program->scripting().frontTabURL(m_browser->name()); };
    m_browser->open({u"http://a.test/"_s});
    TRY_VERIFY(shows(u"http://a.test/"_s));
    m_browser->openWindow(u"http://b.test/"_s);
    TRY_VERIFY(m_hand->sees(u"b.test/"_s));
    m_hand->bringToFront(u"a.test/"_s);
    TRY_COMPARE(front(), u"http://a.test/"_s);
    m_hand->bringToFront(u"b.test/"_s);
    TRY_COMPARE(front(), u"http://b.test/"_s);
    m_hand->bringToFront(u"a.test/"_s);
    TRY_COMPARE(front(), u"http://a.test/"_s);
    m_hand->press(m_kind == RealBrowser::Kind::Firefox ? u"alt+1"_s : u"ctrl+1"_s); // the first tab
    TRY_COMPARE(front(), base);

    // The companion may not see private windows; then nothing is to be taken for the front tab.
    m_browser->openPrivately(u"http://private.test/"_s);
    TRY_VERIFY(m_hand->front().contains(u"private.test/"_s));
    TRY_COMPARE(front(), std::nullopt);
    QVERIFY(!shows(u"http://private.test/"_s));
    m_hand->press(u"ctrl+w"_s);
    TRY_VERIFY(!m_hand->sees(u"private.test/"_s));
    m_hand->bringToFront(u"b.test/"_s);
    TRY_COMPARE(front(), u"http://b.test/"_s);
}

void BrowserChecks::closesByNumberWhileOthersStay()
{
    m_browser->open({u"http://a.test/"_s, u"http://b.test/"_s, u"http://c.test/"_s, u"http://d.test/"_s});
    TRY_COMPARE(tabs().size(), 5);
    m_browser->openWindow(u"http://e.test/"_s);
    TRY_COMPARE(tabs(),
                QStringList({baseLine, u"1-2 http://a.test/"_s, u"1-3 http://b.test/"_s,
                             u"1-4 http://c.test/"_s, u"1-5 http://d.test/"_s, u"2-1 http://e.test/"_s}));
    close({u"http://a.test/"_s, u"http://d.test/"_s, u"http://e.test/"_s});
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://b.test/"_s, u"1-3 http://c.test/"_s}));
    QVERIFY(m_browser->processes().runs());
}

void BrowserChecks::blockedDomainTakesWhatIsBelowIt()
{
    m_browser->open({u"http://blocked.test/"_s, u"http://www.blocked.test/"_s, u"http://a.b.blocked.test/x"_s,
                     u"http://notblocked.test/"_s, u"http://blocked.test.allowed.test/blocked.test"_s});
    TRY_COMPARE(tabs().last(), u"1-6 http://blocked.test.allowed.test/blocked.test"_s);
    TRY_COMPARE(tabs().filter(u"blocked.test"_s).size(), 5);
    QCOMPARE(look({u"blocked.test"_s}), u"Closed 3 blocked browser tabs: blocked.test, a.b.blocked.test."_s);
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://notblocked.test/"_s,
                                     u"1-3 http://blocked.test.allowed.test/blocked.test"_s}));
}

void BrowserChecks::sixHostsAreOneEvent()
{
    QStringList urls;
    for (const auto &letter : {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s})
        urls.append(u"http://%1.blocked.test/"_s.arg(letter));
    m_browser->open(urls);
    TRY_COMPARE(tabs().filter(u".blocked.test/"_s).size(), 6);
    QCOMPARE(look({u"blocked.test"_s}), u"Closed 6 blocked browser tabs: a.blocked.test, b.blocked.test, "
                                        "c.blocked.test, d.blocked.test."_s);
    TRY_COMPARE(tabs(), QStringList(baseLine));
}

void BrowserChecks::slowPageIsListedByWhatItShows()
{
    m_browser->open({u"http://slow.test/slow"_s, u"http://a.test/"_s});
    TRY_VERIFY(shows(u"http://a.test/"_s));
    TRY_COMPARE(m_stage->pages().asked(u"slow.test/slow"_s), 1);
    m_stage->pages().release();
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://slow.test/slow"_s, u"1-3 http://a.test/"_s}));
}

void BrowserChecks::tabThatMovedOnIsLeftAlone()
{
    m_browser->open({u"http://blocked.test/"_s, u"http://gate.test/gate"_s});
    TRY_COMPARE(tabs(),
                QStringList({baseLine, u"1-2 http://blocked.test/"_s, u"1-3 http://gate.test/gate"_s}));
    TRY_COMPARE(m_stage->pages().asked(u"gate.test/ready"_s), 1);
    // While the relay sleeps the page moves on, and the program orders what it last heard.
    const auto sleeping = relays();
    QCOMPARE(sleeping.size(), std::size_t(1));
    ::kill(sleeping.front(), SIGSTOP);
    m_stage->pages().release(u"http://next.test/"_s);
    const auto moved = [this] { return m_stage->pages().asked(u"next.test/shown"_s) == 1; };
    const bool hasMoved = QTest::qWaitFor(moved, patience);
    close({u"http://blocked.test/"_s, u"http://gate.test/gate"_s});
    ::kill(sleeping.front(), SIGCONT);
    QVERIFY(hasMoved);
    // The other tab of the order comes after it and goes; by then this one has been passed over.
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://next.test/"_s}));
}

void BrowserChecks::hungPageIsClosed()
{
    m_browser->open({u"http://hang.test/hang"_s});
    TRY_COMPARE(m_stage->pages().asked(u"hang.test/hanging"_s), 1);
    TRY_VERIFY(shows(u"http://hang.test/hang"_s));
    close({u"http://hang.test/hang"_s});
    TRY_COMPARE(tabs(), QStringList(baseLine));
}

void BrowserChecks::pageThatAsksIsClosed()
{
    if (!m_browser->hasWindows())
        QSKIP("without windows nobody can click into the page, and it asks only after that");
    m_browser->open({u"http://ask.test/ask"_s});
    TRY_VERIFY(m_hand->sees(u"ask.test/ask"_s));
    m_hand->bringToFront(u"ask.test/ask"_s);
    TRY_VERIFY((m_hand->clickInto(u"ask.test/ask"_s), m_stage->pages().asked(u"ask.test/clicked"_s) > 0));
    TRY_VERIFY(shows(u"http://ask.test/ask"_s));
    close({u"http://ask.test/ask"_s});
    TRY_COMPARE(tabs(), QStringList(baseLine));
}

void BrowserChecks::discardedTabIsClosedUnwoken()
{
    if (m_kind == RealBrowser::Kind::Firefox)
        QSKIP("the extension that discards a tab for the test is not in it");
    const auto sleeping = u"http://sleeping.test/"_s;
    m_browser->open({sleeping});
    TRY_COMPARE(m_stage->pages().asked(u"sleeping.test/shown"_s), 1);
    TRY_VERIFY(shows(sleeping));
    m_browser->open({u"http://hand.test/discard/sleeping.test"_s});
    TRY_COMPARE(m_stage->pages().asked(u"hand.test/discarded"_s), 1);
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 "_s + sleeping}));
    close({sleeping});
    TRY_COMPARE(tabs(), QStringList(baseLine));
    QCOMPARE(m_stage->pages().asked(u"sleeping.test/shown"_s), 1);
}

void BrowserChecks::programComesBack()
{
    m_program.reset();
    m_browser->open({u"http://a.test/"_s});
    TRY_VERIFY(m_stage->pages().asked(u"a.test/shown"_s) > 0);
    m_program = std::make_unique<CompanionEnd>(m_stage->programFolder());
    QVERIFY(m_program->works());
    QTRY_COMPARE_WITH_TIMEOUT(tabs(), QStringList({baseLine, u"1-2 http://a.test/"_s}), patienceForRelay);
    close({u"http://a.test/"_s});
    TRY_COMPARE(tabs(), QStringList(baseLine));
}

void BrowserChecks::relayComesBack()
{
    const auto before = relays();
    QCOMPARE(before.size(), std::size_t(1));
    ::kill(before.front(), SIGKILL);
    TRY_COMPARE(tabs(), QStringList());
    QTRY_COMPARE_WITH_TIMEOUT(tabs(), QStringList(baseLine), patienceForRelay);
    QCOMPARE(relays().size(), std::size_t(1));
    QVERIFY(relays() != before);
}

void BrowserChecks::everyProfileIsSeen()
{
    if (m_kind != RealBrowser::Kind::Chromium)
        QSKIP("only Chromium with windows takes another profile into the browser that runs");
    m_browser->openWindow(u"http://second.test/"_s, u"Profile 1"_s);
    TRY_COMPARE(tabs(), QStringList({baseLine, u"2-1 http://second.test/"_s}));
    QCOMPARE(relays().size(), std::size_t(2));
    QCOMPARE(look({u"second.test"_s}), u"Closed 1 blocked browser tab: second.test."_s);
    TRY_VERIFY(!shows(u"http://second.test/"_s));
    QVERIFY(shows(base));
    m_browser->processes().kill(); // the second profile keeps a window, so that the next check begins anew
}

void BrowserChecks::lastTabLeavesTheBrowserRunning()
{
    close({base});
    TRY_VERIFY(!shows(base));
    // The address of the blank tab comes a moment after the tab itself.
    TRY_COMPARE(m_program->scripting().allTabs(m_browser->name()).size(), std::size_t(1));
    QVERIFY(m_browser->processes().runs());
    QCOMPARE(m_program->scripting().allTabs(m_browser->name()).front().windowIndex, 1);
}

void BrowserChecks::killedBrowserIsForgottenAndComesBack()
{
    m_browser->processes().kill();
    QVERIFY(m_browser->processes().members().empty());
    TRY_COMPARE(tabs(), QStringList());
    QCOMPARE(m_program->scripting().frontTabURL(m_browser->name()), std::nullopt);
    QVERIFY(m_browser->start({base}));
    TRY_COMPARE(tabs(), QStringList(baseLine));
    m_browser->open({u"http://a.test/"_s});
    TRY_COMPARE(tabs(), QStringList({baseLine, u"1-2 http://a.test/"_s}));
}
