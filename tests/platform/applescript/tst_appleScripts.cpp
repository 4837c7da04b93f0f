#include "appleScripts.h"
#include "suite.h"

using namespace Qt::StringLiterals;

/// The scripts letter by letter.
class TestAppleScripts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsAllTabs()
    {
        QCOMPARE(allTabsScript(u"Brave Browser"_s),
                 u"tell application \"Brave Browser\"\n"
                 "    set rows to {}\n"
                 "    repeat with w from 1 to count of windows\n"
                 "        repeat with t from 1 to count of tabs of window w\n"
                 "            try\n"
                 "                set tabURL to URL of tab t of window w\n"
                 "                if tabURL is not \"\" then\n"
                 "                    set end of rows to ((w as text) & \"\x09\" & (t as text) & \"\x09\" & "
                 "tabURL)\n"
                 "                end if\n"
                 "            end try\n"
                 "        end repeat\n"
                 "    end repeat\n"
                 "    set AppleScript's text item delimiters to linefeed\n"
                 "    return rows as text\n"
                 "end tell"_s);
        QVERIFY(allTabsScript(u"Safari"_s).startsWith(u"tell application \"Safari\"\n    set rows"_s));
    }

    void readsFrontTab()
    {
        QCOMPARE(frontTabScript(u"Safari"_s), u"tell application \"Safari\"\n"
                                              "    if (count of windows) is 0 then return \"\"\n"
                                              "    return URL of current tab of front window\n"
                                              "end tell"_s);
        QCOMPARE(frontTabScript(u"Google Chrome"_s), u"tell application \"Google Chrome\"\n"
                                                     "    if (count of windows) is 0 then return \"\"\n"
                                                     "    return URL of active tab of front window\n"
                                                     "end tell"_s);
        QVERIFY(frontTabScript(u"safari"_s).contains(u"active tab"_s)); // only the exact name
    }

    void closesInTheGivenOrder()
    {
        QCOMPARE(closeTabsScript({{u"Arc"_s, 2, 1, u"https://a.example/"_s},
                                  {u"Arc"_s, 1, 5, u"https://b.example/"_s},
                                  {u"Arc"_s, 1, 12345678901, u"https://c.example/"_s}},
                                 u"Arc"_s),
                 u"tell application \"Arc\"\n"
                 "    try\n"
                 "        close tab 1 of window 2\n"
                 "    end try\n"
                 "    try\n"
                 "        close tab 5 of window 1\n"
                 "    end try\n"
                 "    try\n"
                 "        close tab 12345678901 of window 1\n"
                 "    end try\n"
                 "end tell"_s);
    }

    void nameStandsAsItIs()
    {
        QVERIFY(closeTabsScript({}, u"A \"B\""_s).startsWith(u"tell application \"A \"B\"\"\n"_s));
    }
};

QUORVEL_TEST(TestAppleScripts, QCoreApplication)
#include "tst_appleScripts.moc"
