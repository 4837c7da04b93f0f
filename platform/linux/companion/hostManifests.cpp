#include "hostManifests.h"

#include "FileCalls.h"
#include "baseFolders.h"
#include "companionIdentity.h"
#include "fileSteps.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;

Q_LOGGING_CATEGORY(lcManifests, "quorvel.companion.manifests")

namespace {

enum class Family { Chromium, Firefox };

struct Browser
{
    Family family;
    QString folder;       ///< in the user's home, where it looks for manifests
    QString manifests;    ///< where in that
    QStringList dataIn;   ///< it has been used if one of these folders is there
    QStringList programs; ///< by what names it is started
};

std::vector<Browser> browsersIn(const HostManifestPlaces &places)
{
    const auto chromium = [&](const QString &folder, const QStringList &programs) {
        const auto path = places.config + u'/' + folder;
        return Browser{Family::Chromium, path, u"/NativeMessagingHosts"_s, {path}, programs};
    };
    // A newer Firefox has its profiles in the config folder, but looks for manifests in the old place alone.
    const auto mozilla = places.home + u"/.mozilla"_s;
    return {
        chromium(u"chromium"_s, {u"chromium"_s, u"chromium-browser"_s}),
        chromium(u"google-chrome"_s, {u"google-chrome"_s, u"google-chrome-stable"_s}),
        chromium(u"microsoft-edge"_s, {u"microsoft-edge"_s, u"microsoft-edge-stable"_s}),
        chromium(u"BraveSoftware/Brave-Browser"_s,
                 {u"brave-browser"_s, u"brave-browser-stable"_s, u"brave"_s}),
        chromium(u"opera"_s, {u"opera"_s, u"opera-stable"_s}),
        {Family::Firefox,
         mozilla,
         u"/native-messaging-hosts"_s,
         {mozilla, places.config + u"/mozilla"_s},
         {u"firefox"_s, u"firefox-esr"_s}},
    };
}

bool isExecutableFile(const QString &path)
{
    const QFileInfo file(path);
    return file.isFile() && file.isExecutable();
}

bool isThere(const Browser &browser, const QStringList &programFolders)
{
    if (std::any_of(browser.dataIn.begin(), browser.dataIn.end(),
                    [](const QString &folder) { return QFileInfo(folder).isDir(); }))
        return true;
    return std::any_of(programFolders.begin(), programFolders.end(), [&](const QString &folder) {
        return std::any_of(browser.programs.begin(), browser.programs.end(),
                           [&](const QString &name) { return isExecutableFile(folder + u'/' + name); });
    });
}

QByteArray manifestFor(Family family, const QString &relay)
{
    nlohmann::ordered_json manifest{{"name", relayName},
                                    {"description", "Lets Quorvel see and close browser tabs"},
                                    {"path", relay.toStdString()},
                                    {"type", "stdio"}};
    if (family == Family::Chromium)
        manifest["allowed_origins"] = {std::string("chrome-extension://") + chromiumExtensionId + '/'};
    else
        manifest["allowed_extensions"] = {firefoxExtensionId};
    return QByteArray::fromStdString(
        manifest.dump(4, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

bool isLink(FileCalls &calls, const QByteArray &path)
{
    char target;
    return calls.readlink(path.constData(), &target, sizeof target) >= 0;
}

/// Puts the file in its place at once. Unlike a record file it is not written through a link: the link may be
/// another program's.
int replaceFile(FileCalls &calls, const QByteArray &path, const QByteArray &bytes)
{
    const auto folder = FileSteps::folderOf(path);
    std::vector<QByteArray> grown; // a folder that a crash takes away again is made at the next start
    if (const int error = FileSteps::createFolder(calls, folder, grown))
        return error;
    return FileSteps::replace(calls, path, bytes);
}

/// Whether it was written.
bool bringUpToDate(FileCalls &calls, const QString &path, const QByteArray &manifest)
{
    const auto native = QFile::encodeName(path);
    if (!isLink(calls, native)) {
        const auto there = FileSteps::read(calls, native);
        if (!there) {
            qCWarning(lcManifests) << "cannot read" << path << "-" << there.reason();
            return false;
        }
        if (there.value() == manifest)
            return false;
    }
    if (const int error = replaceFile(calls, native, manifest)) {
        qCWarning(lcManifests) << "cannot write" << path << "-" << FileSteps::failure(error).reason;
        return false;
    }
    return true;
}

} // namespace

HostManifestPlaces hostManifestPlaces(const QString &relay)
{
    return {homeFolder(), configHome(), relay, programFolders()};
}

QStringList writeHostManifests(FileCalls &calls, const HostManifestPlaces &places)
{
    if (!isExecutableFile(places.relay)) {
        qCWarning(lcManifests) << "browsers are told of no relay: there is none at" << places.relay;
        return {};
    }
    QStringList written;
    for (const auto &browser : browsersIn(places)) {
        if (!isThere(browser, places.programFolders))
            continue;
        const auto path =
            browser.folder + browser.manifests + u'/' + QLatin1StringView(relayName) + u".json"_s;
        if (bringUpToDate(calls, path, manifestFor(browser.family, places.relay)))
            written << path;
    }
    return written;
}
