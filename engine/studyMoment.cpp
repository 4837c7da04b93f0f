// Whether the present second of a session counts as study.
#include "BrowserInspector.h"
#include "QuorvelController.h"
#include "domains.h"
#include "supportedBrowsers.h"

#include <algorithm>

using namespace Qt::StringLiterals;

StudyMoment QuorvelController::validateStudyMoment() const
{
    if (m_idleSeconds > config().maxIdleSeconds) {
        const auto seconds = QString::number(m_idleSeconds);
        return {false, inBoth(u"Paused: Mac is idle for "_s + seconds + u"s."_s,
                              u"Пауза: Mac бездействует "_s + seconds + u" сек."_s)};
    }
    if (!m_blockedRunningAppNames.value().isEmpty()) {
        const auto names = m_blockedRunningAppNames.value().join(u", "_s);
        return {false, inBoth(u"Paused: blocked app is running: "_s + names + u"."_s,
                              u"Пауза: запущено блокируемое приложение: "_s + names + u"."_s)};
    }
    if (!isAllowedStudyApp(m_activeAppName))
        return {false, inBoth(u"Paused: "_s + m_activeAppName + u" is not in allowed study apps."_s,
                              u"Пауза: "_s + m_activeAppName + u" не входит в учебные приложения."_s)};
    return validateStudySite();
}

StudyMoment QuorvelController::validateStudySite() const
{
    if (!supportedBrowsers().contains(m_activeAppName) || config().allowedStudyDomains.isEmpty())
        return {};
    const auto url = BrowserInspector(m_ports.browsers).frontTabURL(m_activeAppName);
    if (!url)
        return {false, inBoth(u"Paused: could not read active browser tab."_s,
                              u"Пауза: не удалось прочитать активную вкладку браузера."_s)};
    if (isAllowedStudyURL(*url))
        return {};
    const auto shown = hostOfUrl(*url).value_or(*url);
    return {false, inBoth(u"Paused: "_s + shown + u" is not in allowed study domains."_s,
                          u"Пауза: "_s + shown + u" не входит в учебные домены."_s)};
}

bool QuorvelController::isAllowedStudyApp(const QString &name) const
{
    const auto lowerName = name.toLower();
    const auto &allowed = config().allowedStudyApps;
    return std::any_of(allowed.begin(), allowed.end(), [&](const QString &entry) {
        const auto part = entry.toLower().trimmed();
        return !part.isEmpty() && lowerName.contains(part);
    });
}

bool QuorvelController::isAllowedStudyURL(const QString &url) const
{
    const auto host = hostOfUrl(url);
    return host && DomainSet(config().allowedStudyDomains).contains(normalizeDomain(*host));
}
