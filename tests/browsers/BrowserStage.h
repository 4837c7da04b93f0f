#pragma once

#include "PageServer.h"
#include "VirtualDesktop.h"

/// What real browsers need to be tested: a desktop, folders of its own for all that they write, and a web of
/// its own. Nothing reaches the network, and nothing stays behind.
class BrowserStage
{
public:
    BrowserStage();

    bool works() const { return m_desktop.works() && m_pages.works(); }

    VirtualDesktop &desktop() { return m_desktop; }
    PageServer &pages() { return m_pages; }

    /// What browsers, and the relays that they start, get to see.
    const QProcessEnvironment &environment() const { return m_environment; }
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }

    /// A path in the stage's folder.
    QString path(const QString &name) const { return m_desktop.filePath(name); }

    /// The private folder in which relays look for the program; there, and open to its owner alone.
    QString programFolder() const { return path(QStringLiteral("run/quorvel")); }

private:
    VirtualDesktop m_desktop;
    PageServer m_pages;
    QProcessEnvironment m_environment;
};
