#include "appleScripts.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QString tell(const QString &browser)
{
    return u"tell application \""_s + browser + u'"';
}

} // namespace

QString allTabsScript(const QString &browser)
{
    return QStringList{
        tell(browser),
        u"    set rows to {}"_s,
        u"    repeat with w from 1 to count of windows"_s,
        u"        repeat with t from 1 to count of tabs of window w"_s,
        u"            try"_s,
        u"                set tabURL to URL of tab t of window w"_s,
        u"                if tabURL is not \"\" then"_s,
        u"                    set end of rows to ((w as text) & \"\t\" & (t as text) & \"\t\" & tabURL)"_s,
        u"                end if"_s,
        u"            end try"_s,
        u"        end repeat"_s,
        u"    end repeat"_s,
        u"    set AppleScript's text item delimiters to linefeed"_s,
        u"    return rows as text"_s,
        u"end tell"_s,
    }
        .join(u'\n');
}

QString frontTabScript(const QString &browser)
{
    const auto tab = browser == u"Safari" ? u"current"_s : u"active"_s; // Safari's own word for it
    return QStringList{
        tell(browser),
        u"    if (count of windows) is 0 then return \"\""_s,
        u"    return URL of "_s + tab + u" tab of front window"_s,
        u"end tell"_s,
    }
        .join(u'\n');
}

QString closeTabsScript(const std::vector<BrowserTab> &tabs, const QString &browser)
{
    QStringList lines{tell(browser)};
    for (const auto &tab : tabs) {
        lines.append(u"    try"_s);
        lines.append(u"        close tab "_s + QString::number(tab.tabIndex) + u" of window "_s +
                     QString::number(tab.windowIndex));
        lines.append(u"    end try"_s);
    }
    lines.append(u"end tell"_s);
    return lines.join(u'\n');
}
