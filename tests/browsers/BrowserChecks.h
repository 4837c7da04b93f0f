#pragma once

#include "CompanionEnd.h"
#include "PointerAndKeys.h"
#include "RealBrowser.h"

#include <QObject>

/// What must hold with every real browser: it, the extension, the relay and the program's end at work
/// together. One browser serves all; each check begins with its one tab, which shows base.test/remote.
class BrowserChecks : public QObject
{
    Q_OBJECT

public:
    explicit BrowserChecks(RealBrowser::Kind kind)
        : m_kind(kind)
    {}

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void listsWindowsAndTabsByNumber();
    void frontTabFollowsTheKeyboard();
    void closesByNumberWhileOthersStay();
    void blockedDomainTakesWhatIsBelowIt();
    void sixHostsAreOneEvent();
    void slowPageIsListedByWhatItShows();
    void tabThatMovedOnIsLeftAlone();
    void hungPageIsClosed();
    void pageThatAsksIsClosed();
    void discardedTabIsClosedUnwoken();
    void programComesBack();
    void relayComesBack();
    void everyProfileIsSeen();
    void lastTabLeavesTheBrowserRunning();
    void killedBrowserIsForgottenAndComesBack();

private:
    QStringList tabs() { return m_program->tabs(m_browser->name()); }
    bool shows(const QString &url);
    void close(const QStringList &urls);
    QString look(const QStringList &blockedDomains);
    std::vector<pid_t> relays() const;

    RealBrowser::Kind m_kind;
    std::unique_ptr<BrowserStage> m_stage;
    std::unique_ptr<CompanionEnd> m_program;
    std::unique_ptr<RealBrowser> m_browser;
    std::unique_ptr<PointerAndKeys> m_hand;
};
