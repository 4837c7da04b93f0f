#include "CompanionCoverage.h"

#include "CompanionServer.h"
#include "browserNames.h"

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;
using State = BrowserCoverage::State;

namespace {

/// The name under which a running application's tabs are asked for; none where it is no such browser.
std::optional<QString> browserName(const RunningApplication &application)
{
    if (application.localizedName && isSupportedBrowserName(*application.localizedName))
        return application.localizedName;
    return furtherBrowserName(application.bundleIdentifier.value_or(QString()),
                              application.bundlePath.value_or(QString()));
}

/// A snap or a Flatpak: their browsers cannot start the relay.
bool isSandboxed(const RunningApplication &application)
{
    const auto path = application.bundlePath.value_or(QString());
    if (path.startsWith("/snap/"_L1) || path.startsWith("/app/"_L1) || path.contains("/flatpak/"_L1))
        return true;
    // A snap's entry is called SNAP_APPLICATION; no other browser's has that character.
    return application.bundleIdentifier.value_or(QString()).contains(u'_');
}

} // namespace

CompanionCoverage::CompanionCoverage(const CompanionServer &server, const Places &places,
                                     std::function<void()> browserMissed)
    : m_server(server)
    , m_places(places)
    , m_browserMissed(std::move(browserMissed))
{}

std::vector<BrowserCoverage> CompanionCoverage::coverage(const std::vector<RunningApplication> &running)
{
    std::map<QString, bool> sandboxed; // where every one of that name is
    for (const auto &application : running) {
        if (const auto name = browserName(application)) {
            const bool isOne = isSandboxed(application);
            const auto [place, isNew] = sandboxed.emplace(*name, isOne);
            place->second = place->second && isOne;
        }
    }
    std::vector<BrowserCoverage> entries;
    entries.reserve(sandboxed.size());
    for (const auto &[name, isOne] : sandboxed)
        entries.push_back(coverageOf(name, isOne));
    noteMissing(entries);
    return entries;
}

void CompanionCoverage::noteMissing(const std::vector<BrowserCoverage> &entries)
{
    QSet<QString> missing;
    for (const auto &entry : entries) {
        if (entry.state == State::Missing)
            missing.insert(entry.browser);
    }
    const bool isNew = !m_missing.contains(missing);
    m_missing = missing;
    if (isNew && m_browserMissed)
        m_browserMissed();
}

BrowserCoverage CompanionCoverage::coverageOf(const QString &browser, bool sandboxed) const
{
    if (!m_server.sources(browser).empty())
        return connected(browser);
    if (m_server.speaksAnotherProtocol(browser))
        return outdated(browser);
    if (browser == u"Safari")
        return {browser, State::CannotWork, u"Safari has no companion here, so its tabs are not seen."_s,
                u"Для Safari здесь нет компаньона, поэтому его вкладки не видны."_s};
    if (sandboxed)
        return {browser, State::CannotWork,
                u"%1 runs as a Snap or Flatpak, which the companion cannot reach: "
                "install the browser's normal package."_s.arg(browser),
                u"%1 запущен из Snap или Flatpak, и компаньон не может с ним связаться: "
                "установи обычный пакет браузера."_s.arg(browser)};
    return missing(browser);
}

BrowserCoverage CompanionCoverage::connected(const QString &browser) const
{
    const auto sources = m_server.sources(browser);
    const bool seesPrivate = std::all_of(sources.begin(), sources.end(), [](const auto &source) {
        return source.ledger->seesPrivateWindows();
    });
    if (seesPrivate)
        return {browser, State::Connected, u"The tabs of %1 are seen."_s.arg(browser),
                u"Вкладки %1 видны."_s.arg(browser)};
    const auto option =
        isSupportedBrowserName(browser) ? u"Allow in Incognito"_s : u"Run in Private Windows"_s;
    return {browser, State::Connected,
            u"The tabs of %1 are seen, but private windows are not: switch on “%2” for the companion in the "
            "browser's list of extensions."_s.arg(browser, option),
            u"Вкладки %1 видны, кроме приватных окон: включи «%2» для компаньона в списке расширений "
            "браузера."_s.arg(browser, option)};
}

BrowserCoverage CompanionCoverage::missing(const QString &browser) const
{
    if (isSupportedBrowserName(browser))
        return {
            browser, State::Missing,
            u"To let Quorvel see the tabs of %1, open chrome://extensions in it, switch on Developer mode, "
            "choose “Load unpacked” and pick the folder %2."_s.arg(browser, m_places.folder),
            u"Чтобы Quorvel видел вкладки %1, открой в нём chrome://extensions, включи режим "
            "разработчика, нажми «Загрузить распакованное расширение» и выбери папку %2."_s.arg(
                browser, m_places.folder)};
    return {
        browser, State::Missing,
        u"To let Quorvel see the tabs of %1, open about:debugging in it, choose “This Firefox” and “Load "
        "Temporary Add-on” and pick the file %2; it stays until the browser ends."_s.arg(browser,
                                                                                         m_places.addOn),
        u"Чтобы Quorvel видел вкладки %1, открой в нём about:debugging, выбери «Этот Firefox» и «Загрузить "
        "временное дополнение» и укажи файл %2; оно проработает до закрытия браузера."_s.arg(browser,
                                                                                             m_places.addOn)};
}

BrowserCoverage CompanionCoverage::outdated(const QString &browser) const
{
    const auto place = isSupportedBrowserName(browser) ? m_places.folder : m_places.addOn;
    return {
        browser, State::Missing,
        u"The companion in %1 is of another version than Quorvel: update it from %2."_s.arg(browser, place),
        u"Компаньон в %1 другой версии, чем Quorvel: обнови его из %2."_s.arg(browser, place)};
}
