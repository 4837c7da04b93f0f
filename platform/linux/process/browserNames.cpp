#include "browserNames.h"

#include "supportedBrowsers.h"

#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

const QHash<QString, QString> &namesById()
{
    static const QHash<QString, QString> names{
        {u"google-chrome"_s, u"Google Chrome"_s},
        {u"google-chrome-stable"_s, u"Google Chrome"_s},
        {u"com.google.Chrome"_s, u"Google Chrome"_s},
        {u"brave"_s, u"Brave Browser"_s},
        {u"brave-browser"_s, u"Brave Browser"_s},
        {u"brave-browser-stable"_s, u"Brave Browser"_s},
        {u"com.brave.Browser"_s, u"Brave Browser"_s},
        {u"brave_brave"_s, u"Brave Browser"_s},
        {u"microsoft-edge"_s, u"Microsoft Edge"_s},
        {u"microsoft-edge-stable"_s, u"Microsoft Edge"_s},
        {u"com.microsoft.Edge"_s, u"Microsoft Edge"_s},
        {u"chromium"_s, u"Chromium"_s},
        {u"chromium-browser"_s, u"Chromium"_s},
        {u"org.chromium.Chromium"_s, u"Chromium"_s},
        {u"chromium_chromium"_s, u"Chromium"_s},
        {u"opera"_s, u"Opera"_s},
        {u"opera-stable"_s, u"Opera"_s},
        {u"com.opera.Opera"_s, u"Opera"_s},
        {u"opera_opera"_s, u"Opera"_s},
        {u"com.apple.Safari"_s, u"Safari"_s},
        {u"company.thebrowser.Browser"_s, u"Arc"_s},
    };
    return names;
}

std::optional<QString> nameOfId(const QString &desktopId)
{
    const auto found = namesById().constFind(desktopId);
    return found == namesById().cend() ? std::nullopt : std::optional(*found);
}

/// Tells editions apart: Edge's developer edition is "msedge-dev/msedge".
QString folderAndFile(const QString &executable)
{
    return executable.section(u'/', -2);
}

std::optional<QString> nameOfExecutable(const QString &executable)
{
    static const QHash<QString, QString> names{
        {u"chrome/chrome"_s, u"Google Chrome"_s},
        {u"brave/brave"_s, u"Brave Browser"_s},
        {u"msedge/msedge"_s, u"Microsoft Edge"_s},
        {u"chromium/chromium"_s, u"Chromium"_s},
        {u"chromium-browser/chromium-browser"_s, u"Chromium"_s},
        {u"chromium-browser/chrome"_s, u"Chromium"_s},
        {u"opera/opera"_s, u"Opera"_s},
    };
    const auto found = names.constFind(folderAndFile(executable));
    return found == names.cend() ? std::nullopt : std::optional(*found);
}

} // namespace

std::optional<QString> supportedBrowserName(const QString &desktopId, const QString &executable)
{
    return desktopId.isEmpty() ? nameOfExecutable(executable) : nameOfId(desktopId);
}

bool isSupportedBrowserName(const QString &name)
{
    return supportedBrowsers().contains(name);
}

std::optional<QString> furtherBrowserName(const QString &desktopId, const QString &executable)
{
    static const QSet<QString> ids{u"firefox"_s, u"firefox-esr"_s, u"firefox_firefox"_s,
                                   u"org.mozilla.firefox"_s, u"mozilla-firefox"_s};
    static const QSet<QString> programs{u"firefox-esr/firefox-esr"_s, u"firefox-esr/firefox"_s,
                                        u"firefox-esr/firefox-bin"_s, u"firefox/firefox"_s,
                                        u"firefox/firefox-bin"_s};
    const bool isFirefox =
        desktopId.isEmpty() ? programs.contains(folderAndFile(executable)) : ids.contains(desktopId);
    return isFirefox ? std::optional(u"Firefox"_s) : std::nullopt;
}
