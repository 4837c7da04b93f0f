#include "RealBrowser.h"

#include "companionIdentity.h"
#include "patience.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s cannot be written", qUtf8Printable(path));
}

/// Packs what is in the folder.
void pack(const QString &folder, const QString &archive)
{
    QDir().mkpath(QFileInfo(archive).path());
    QProcess zip;
    zip.setWorkingDirectory(folder);
    zip.start(u"python3"_s, QStringList{u"-m"_s, u"zipfile"_s, u"-c"_s, archive} +
                                QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot));
    if (!zip.waitForFinished() || zip.exitCode() != 0)
        qFatal("%s cannot be packed", qUtf8Printable(folder));
}

QByteArray hostManifest(const QString &relay, const QString &key, const QString &extension)
{
    return QJsonDocument(QJsonObject{{u"name"_s, QString::fromLatin1(relayName)},
                                     {u"description"_s, u"Quorvel"_s},
                                     {u"path"_s, relay},
                                     {u"type"_s, u"stdio"_s},
                                     {key, QJsonArray{extension}}})
        .toJson();
}

} // namespace

RealBrowser::RealBrowser(Kind kind, BrowserStage &stage, const QString &extension, const QString &relay)
    : m_kind(kind)
    , m_stage(stage)
    , m_folder(kind == Kind::Chromium  ? u"chromium"_s
               : kind == Kind::Firefox ? u"firefox"_s
                                       : u"headless"_s)
    , m_extension(extension)
{
    install(extension, relay);
}

QString RealBrowser::name() const
{
    return m_kind == Kind::Firefox ? u"Firefox"_s : u"Chromium"_s;
}

void RealBrowser::install(const QString &extension, const QString &relay) const
{
    const auto manifest = QString::fromLatin1(relayName) + u".json"_s;
    if (m_kind != Kind::Firefox) {
        writeFile(m_stage.path(m_folder + u"/NativeMessagingHosts/"_s + manifest),
                  hostManifest(relay, u"allowed_origins"_s,
                               u"chrome-extension://%1/"_s.arg(QLatin1StringView(chromiumExtensionId))));
        return;
    }
    const auto identity = QString::fromLatin1(firefoxExtensionId);
    writeFile(m_stage.path(u"home/.mozilla/native-messaging-hosts/"_s + manifest),
              hostManifest(relay, u"allowed_extensions"_s, identity));
    pack(extension, m_stage.path(m_folder + u"/extensions/%1.xpi"_s.arg(identity)));
    writePreferences();
}

void RealBrowser::writePreferences() const
{
    const auto port = QByteArray::number(m_stage.pages().port());
    const std::pair<QByteArray, QByteArray> preferences[] = {
        {"network.proxy.type", "1"},
        {"network.proxy.http", "\"127.0.0.1\""},
        {"network.proxy.http_port", port},
        {"network.proxy.ssl", "\"127.0.0.1\""},
        {"network.proxy.ssl_port", port},
        {"network.proxy.no_proxies_on", "\"\""},
        {"network.proxy.allow_hijacking_localhost", "true"},
        {"dom.security.https_first", "false"},
        // The companion is taken unsigned and without a question.
        {"extensions.autoDisableScopes", "0"},
        {"extensions.enabledScopes", "15"},
        {"extensions.startupScanScopes", "15"},
        {"xpinstall.signatures.required", "false"},
        // No pages of its own.
        {"browser.shell.checkDefaultBrowser", "false"},
        {"browser.aboutwelcome.enabled", "false"},
        {"browser.preonboarding.enabled", "false"},
        {"browser.startup.homepage_override.mstone", "\"ignore\""},
        {"browser.sessionstore.resume_from_crash", "false"},
        {"datareporting.policy.dataSubmissionEnabled", "false"},
        {"toolkit.telemetry.enabled", "false"},
        {"app.normandy.enabled", "false"},
        {"app.update.enabled", "false"},
    };
    QByteArray text;
    for (const auto &[key, value] : preferences)
        text += "user_pref(\"" + key + "\", " + value + ");\n";
    writeFile(m_stage.path(m_folder + u"/user.js"_s), text);
}

QString RealBrowser::program() const
{
    return m_kind == Kind::Firefox ? u"firefox-esr"_s : u"chromium"_s;
}

QStringList RealBrowser::arguments() const
{
    if (m_kind == Kind::Firefox)
        return {u"--profile"_s, m_stage.path(m_folder)};
    QStringList words{
        u"--user-data-dir="_s + m_stage.path(m_folder),
        u"--load-extension="_s + m_extension,
        u"--disable-extensions-except="_s + m_extension,
        // The stage is the whole web, loopback too.
        u"--proxy-server=http://127.0.0.1:%1"_s.arg(m_stage.pages().port()),
        u"--proxy-bypass-list=<-loopback>"_s,
        u"--disable-background-networking"_s,
        u"--disable-component-update"_s,
        u"--disable-default-apps"_s,
        u"--disable-quic"_s,
        u"--disable-sync"_s,
        // No questions, no key ring, and containers have little shared memory.
        u"--no-first-run"_s,
        u"--password-store=basic"_s,
        u"--disable-dev-shm-usage"_s,
        u"--disable-popup-blocking"_s,
    };
    if (::geteuid() == 0)
        words.append(u"--no-sandbox"_s); // it refuses to run otherwise
    if (m_kind == Kind::ChromiumHeadless)
        words.append(u"--headless=new"_s);
    return words;
}

QStringList RealBrowser::ofProfile(const QString &profile) const
{
    // Without a name Chromium would ask which one, as soon as there are two.
    if (m_kind == Kind::Firefox)
        return {};
    return {u"--profile-directory="_s + (profile.isEmpty() ? u"Default"_s : profile)};
}

bool RealBrowser::start(const QStringList &urls)
{
    return m_processes.start(program(), arguments() + ofProfile() + urls, m_stage.environment(), log());
}

void RealBrowser::open(const QStringList &urls)
{
    if (m_kind == Kind::Firefox) { // takes plain addresses for windows
        QStringList words;
        for (const auto &url : urls)
            words += {u"--new-tab"_s, url};
        callAgain(words);
        return;
    }
    if (hasWindows()) {
        callAgain(ofProfile() + urls);
        return;
    }
    for (const auto &url : urls)
        m_stage.pages().open(url);
}

void RealBrowser::openWindow(const QString &url, const QString &profile)
{
    if (!hasWindows()) {
        m_stage.pages().open(url, true);
        return;
    }
    callAgain(ofProfile(profile) + QStringList{u"--new-window"_s, url});
}

void RealBrowser::openPrivately(const QString &url)
{
    callAgain(ofProfile() +
              QStringList{m_kind == Kind::Firefox ? u"--private-window"_s : u"--incognito"_s, url});
}

void RealBrowser::callAgain(const QStringList &words)
{
    ProcessFamily call;
    if (call.start(program(), arguments() + words, m_stage.environment(), log()))
        call.waitForEnd(patience);
}
