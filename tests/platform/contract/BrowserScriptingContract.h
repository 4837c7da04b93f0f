#pragma once

#include "BrowserScripting.h"

#include <QObject>
#include <QTest>

#include <algorithm>
#include <memory>

/// A browser whose tabs a contract test lays out: a fake one, a simulated one or a real one. Windows and tabs
/// are named by their numbers, from 1. A call may return before its effect is seen.
class TabLayout
{
public:
    virtual ~TabLayout() = default;

    virtual BrowserScripting &scripting() = 0;
    virtual QString browser() const = 0; ///< the name of the browser that is laid out

    /// These windows and no others, each with the addresses of its tabs; an empty one stands for a tab
    /// without an address. The first tab of each is active, and no window has the keyboard.
    virtual void setWindows(const std::vector<std::vector<QString>> &windows) = 0;
    virtual void bringToFront(int window, int tab) = 0;
    virtual void takeKeyboardAway() = 0;
    virtual void goTo(int window, int tab, const QString &url) = 0;
    virtual void remove(int window, int tab) = 0;
};

/// What every BrowserScripting does. A test of an adapter derives from this and makes its stage.
class BrowserScriptingContract : public QObject
{
    Q_OBJECT

protected:
    virtual std::unique_ptr<TabLayout> makeStage() = 0;

private:
    std::unique_ptr<TabLayout> m_stage;

    BrowserScripting &scripting() { return m_stage->scripting(); }
    std::vector<BrowserTab> listed() { return scripting().allTabs(m_stage->browser()); }
    QStringList addresses()
    {
        QStringList urls;
        for (const auto &tab : listed())
            urls << tab.url;
        return urls;
    }
    QString front() { return scripting().frontTabURL(m_stage->browser()).value_or(QStringLiteral("none")); }
    static QString page(int number) { return QStringLiteral("https://page%1.example/").arg(number); }

private Q_SLOTS:
    void init()
    {
        m_stage = makeStage();
        m_stage->setWindows({{page(1), page(2), page(3)}, {page(4)}, {page(5), page(2)}});
        QTRY_COMPARE(addresses(), (QStringList{page(1), page(2), page(3), page(4), page(5), page(2)}));
    }
    void cleanup() { m_stage.reset(); }

    void works() { QCOMPARE(scripting().availability(), Availability::working()); }

    void listsWindowByWindowAndNumbersFromOne()
    {
        const auto name = m_stage->browser();
        const std::vector<BrowserTab> expected{{name, 1, 1, page(1)}, {name, 1, 2, page(2)},
                                               {name, 1, 3, page(3)}, {name, 2, 1, page(4)},
                                               {name, 3, 1, page(5)}, {name, 3, 2, page(2)}};
        QVERIFY(listed() == expected);
        QVERIFY(listed() == expected); // asking changes nothing
    }

    void aTabWithoutAddressIsNotListedButCounts()
    {
        const auto name = m_stage->browser();
        m_stage->setWindows({{QString(), page(2)}, {page(3)}});
        QTRY_COMPARE(addresses(), (QStringList{page(2), page(3)}));
        const std::vector<BrowserTab> expected{{name, 1, 2, page(2)}, {name, 2, 1, page(3)}};
        QVERIFY(listed() == expected);
    }

    void anUnknownBrowserHasNothing()
    {
        const auto nobody = QStringLiteral("No Such Browser");
        QVERIFY(scripting().allTabs(nobody).empty());
        QVERIFY(!scripting().frontTabURL(nobody));
        scripting().closeTabs(nobody, listed());
        QTest::qWait(20);
        QCOMPARE(addresses().size(), 6);
    }

    void tellsTheFrontTab()
    {
        QCOMPARE(front(), QStringLiteral("none"));
        m_stage->bringToFront(1, 2);
        QTRY_COMPARE(front(), page(2));
        m_stage->bringToFront(3, 1);
        QTRY_COMPARE(front(), page(5));
        m_stage->goTo(3, 1, page(6));
        QTRY_COMPARE(front(), page(6));
        m_stage->takeKeyboardAway();
        QTRY_COMPARE(front(), QStringLiteral("none"));
    }

    void aFrontTabWithoutAddressHasNone()
    {
        m_stage->bringToFront(1, 1);
        QTRY_COMPARE(front(), page(1));
        m_stage->goTo(1, 1, QString());
        QTRY_COMPARE(front(), QStringLiteral("none"));
    }

    void closesExactlyTheseTabs()
    {
        const auto tabs = listed();
        scripting().closeTabs(m_stage->browser(), {tabs[5], tabs[3], tabs[0]});
        QTRY_COMPARE(addresses(), (QStringList{page(2), page(3), page(5)}));
    }

    void passesOverATabThatMovedOn()
    {
        const auto tabs = listed();
        m_stage->goTo(1, 2, page(7));
        QTRY_VERIFY(addresses().contains(page(7)));
        scripting().closeTabs(m_stage->browser(), {tabs[2], tabs[1], tabs[0]});
        QTRY_COMPARE(addresses(), (QStringList{page(7), page(4), page(5), page(2)}));
    }

    void passesOverATabThatVanished()
    {
        const auto tabs = listed();
        m_stage->remove(3, 2);
        QTRY_COMPARE(addresses().size(), 5);
        scripting().closeTabs(m_stage->browser(), {tabs[5], tabs[4]});
        QTRY_COMPARE(addresses(), (QStringList{page(1), page(2), page(3), page(4)}));
    }

    void passesOverNumbersThatNobodyHas()
    {
        const auto name = m_stage->browser();
        scripting().closeTabs(name, {{name, 0, 1, page(1)},
                                     {name, 1, 0, page(1)},
                                     {name, -1, -1, page(1)},
                                     {name, 4, 1, page(1)},
                                     {name, 1, 4, page(1)},
                                     {name, 2, 1, page(4)}});
        QTRY_COMPARE(addresses(), (QStringList{page(1), page(2), page(3), page(5), page(2)}));
    }
};
