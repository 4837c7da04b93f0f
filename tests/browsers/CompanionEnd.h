#pragma once

#include "CompanionScripting.h"
#include "CompanionServer.h"

#include <QFile>
#include <QStringList>

/// The program's end of the companion in the test's own process, on a stage's folder.
class CompanionEnd
{
public:
    explicit CompanionEnd(const QString &folder)
        : m_server(QFile::encodeName(folder))
        , m_scripting(m_server)
        , m_listens(m_server.listen().ok())
    {}

    bool works() const { return m_listens; }
    CompanionScripting &scripting() { return m_scripting; }

    /// A browser's tabs, as "window-tab address".
    QStringList tabs(const QString &browser)
    {
        QStringList lines;
        for (const auto &tab : m_scripting.allTabs(browser))
            lines.append(QStringLiteral("%1-%2 %3").arg(tab.windowIndex).arg(tab.tabIndex).arg(tab.url));
        return lines;
    }

private:
    CompanionServer m_server;
    CompanionScripting m_scripting;
    bool m_listens;
};
