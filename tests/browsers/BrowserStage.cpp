#include "BrowserStage.h"

#include <QDir>

using namespace Qt::StringLiterals;

BrowserStage::BrowserStage()
    : m_environment(m_desktop.environment())
{
    // Chromium keeps a socket there; it would stay behind a browser that was killed.
    QDir().mkpath(path(u"tmp"_s));
    m_environment.insert(u"TMPDIR"_s, path(u"tmp"_s));
    QDir().mkpath(programFolder());
    QFile::setPermissions(programFolder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
