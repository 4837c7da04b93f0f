#include "FailingFileCalls.h"
#include "companionIdentity.h"
#include "hostManifests.h"
#include "keptWarnings.h"
#include "suite.h"
#include "testFiles.h"

#include <memory>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using namespace TestFiles;
using Json = nlohmann::json;

namespace {

const auto fileName = QLatin1StringView(relayName) + u".json"_s;

struct stat statusOf(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) < 0)
        qFatal("the test's file is not there");
    return status;
}

} // namespace

class tst_hostManifests : public QObject
{
    Q_OBJECT

    KeptWarnings m_warnings;

private Q_SLOTS:
    void initTestCase() { m_warnings.begin("quorvel.companion.manifests"); }
    void init()
    {
        m_warnings.texts().clear();
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_home->path()).mkpath(u"bin"_s));
        addProgram(u"relay"_s);
    }

    void eachBrowser_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("manifests");
        QTest::addColumn<QString>("program");
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("value");
        const QByteArray origins = "allowed_origins";
        const auto origin = QByteArray("chrome-extension://") + chromiumExtensionId + '/';
        const auto hosts = u"/NativeMessagingHosts"_s;
        QTest::newRow("chromium") << u"cfg/chromium"_s << hosts << u"chromium"_s << origins << origin;
        QTest::newRow("chrome") << u"cfg/google-chrome"_s << hosts << u"google-chrome"_s << origins << origin;
        QTest::newRow("edge") << u"cfg/microsoft-edge"_s << hosts << u"microsoft-edge"_s << origins << origin;
        QTest::newRow("brave") << u"cfg/BraveSoftware/Brave-Browser"_s << hosts << u"brave-browser"_s
                               << origins << origin;
        QTest::newRow("opera") << u"cfg/opera"_s << hosts << u"opera"_s << origins << origin;
        QTest::newRow("firefox") << u".mozilla"_s << u"/native-messaging-hosts"_s << u"firefox-esr"_s
                                 << QByteArray("allowed_extensions") << QByteArray(firefoxExtensionId);
    }
    void eachBrowser()
    {
        QFETCH(QString, folder);
        QFETCH(QString, manifests);
        QFETCH(QString, program);
        QFETCH(QByteArray, key);
        QFETCH(QByteArray, value);
        const auto path = m_home->filePath(folder + manifests + u'/' + fileName);
        QCOMPARE(write(), QStringList()); // no browser is there

        QVERIFY(QDir(m_home->path()).mkpath(folder));
        QCOMPARE(write(), QStringList{path});
        const auto json = Json::parse(content(path).toStdString());
        QVERIFY(json["name"] == relayName);
        QVERIFY(json["type"] == "stdio");
        QVERIFY(json["path"] == m_home->filePath(u"bin/relay"_s).toStdString());
        QVERIFY(json[key.toStdString()] == Json::array({value.toStdString()}));
        QCOMPARE(json.size(), std::size_t(5));
        QVERIFY(json["description"].is_string());

        QVERIFY(QDir(m_home->filePath(folder)).removeRecursively());
        addProgram(program); // installed, and never used
        QCOMPARE(write(), QStringList{path});
        QCOMPARE(mode(m_home->filePath(folder)), 0700);
        QCOMPARE(mode(m_home->filePath(folder + manifests)), 0700);
        QCOMPARE(m_warnings.texts(), QStringList());
    }

    void firefoxWithItsProfilesInTheConfigFolder()
    {
        QVERIFY(QDir(m_home->path()).mkpath(u"cfg/mozilla"_s));
        QCOMPARE(write(), QStringList{m_home->filePath(u".mozilla/native-messaging-hosts/"_s + fileName)});
    }

    void aRightFileIsLeftAlone()
    {
        const auto path = chromiumManifest();
        write();
        const auto before = statusOf(path);
        QCOMPARE(write(), QStringList());
        const auto after = statusOf(path);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    }

    void aWrongFileIsReplaced_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut off") << QByteArray("{\"name\"");
        QTest::newRow("longer") << QByteArray(100'000, 'x');
    }
    void aWrongFileIsReplaced()
    {
        QFETCH(QByteArray, bytes);
        const auto path = chromiumManifest();
        write();
        const auto right = content(path);
        put(path, bytes);
        put(QFileInfo(path).path() + u"/."_s + fileName + u".new"_s, "what a crash left");
        QCOMPARE(write(), QStringList{path});
        QCOMPARE(content(path), right);
        QCOMPARE(names(QFileInfo(path).path()), QStringList{fileName});
    }

    void theRelayHasMoved()
    {
        const auto path = chromiumManifest();
        write();
        addProgram(u"other"_s);
        auto places = this->places();
        places.relay = m_home->filePath(u"bin/other"_s);
        QCOMPARE(writeHostManifests(FileCalls::system(), places), QStringList{path});
        QVERIFY(content(path).contains("bin/other"));
    }

    void aLinkIsReplacedAndNotFollowed()
    {
        const auto path = chromiumManifest();
        write();
        const auto right = content(path);
        const auto elsewhere = m_home->filePath(u"elsewhere"_s);
        for (const auto &bytes : {QByteArray("another program's"), right}) {
            put(elsewhere, bytes);
            QVERIFY(QFile::remove(path));
            symbolicLink(elsewhere, path);
            QCOMPARE(write(), QStringList{path});
            QVERIFY(!QFileInfo(path).isSymLink());
            QCOMPARE(content(path), right);
            QCOMPARE(content(elsewhere), bytes);
        }
    }

    void aFolderInItsPlaceIsLeft()
    {
        const auto path = chromiumManifest();
        QVERIFY(QDir().mkpath(path + u"/inside"_s));
        QVERIFY(QDir(m_home->path()).mkpath(u".mozilla"_s));
        QCOMPARE(write().size(), 1); // the other browser's
        QCOMPARE(m_warnings.texts().size(), 1);
        QVERIFY(QFileInfo(path + u"/inside"_s).isDir());
    }

    void aFileInTheFoldersPlaceIsLeft()
    {
        const auto path = chromiumManifest();
        put(QFileInfo(path).path(), "a file");
        QCOMPARE(write(), QStringList());
        QCOMPARE(m_warnings.texts().size(), 1);
        QCOMPARE(content(QFileInfo(path).path()), QByteArray("a file"));
    }

    void leavesOldOrNewWhateverStepFails()
    {
        const auto path = chromiumManifest();
        write();
        const auto right = content(path);
        int failed = 0;
        for (int step = 0;; ++step) {
            put(path, "old");
            m_warnings.texts().clear();
            FailingFileCalls calls;
            calls.failingStep = step;
            calls.error = EROFS;
            const auto written = writeHostManifests(calls, places());
            if (calls.steps.size() <= step)
                break;
            QVERIFY(content(path) == (written.isEmpty() ? QByteArray("old") : right));
            QCOMPARE(m_warnings.texts().size(), written.isEmpty() ? 1 : 0);
            if (calls.steps.at(step) != "unlink")
                QCOMPARE(names(QFileInfo(path).path()), QStringList{fileName});
            failed += written.isEmpty();
        }
        QVERIFY2(failed >= 6, qPrintable(QString::number(failed)));
    }

    void withoutARelayNothingIsWritten()
    {
        const auto path = chromiumManifest();
        QVERIFY(QFile::remove(m_home->filePath(u"bin/relay"_s)));
        QCOMPARE(write(), QStringList());
        put(m_home->filePath(u"bin/relay"_s), "no program");
        QCOMPARE(write(), QStringList());
        QVERIFY(!QFileInfo::exists(path));
        QCOMPARE(m_warnings.texts().size(), 2);
    }

    void ownPlaces()
    {
        qputenv("XDG_CONFIG_HOME", "relative");
        QCOMPARE(hostManifestPlaces({}).config, QDir::homePath() + u"/.config"_s);
        qputenv("XDG_CONFIG_HOME", "/some/where/");
        QCOMPARE(hostManifestPlaces({}).config, u"/some/where"_s);
        qunsetenv("XDG_CONFIG_HOME");
        QVERIFY(hostManifestPlaces({}).programFolders.contains(u"/usr/bin"_s));
    }

private:
    HostManifestPlaces places() const
    {
        return {m_home->path(),
                m_home->filePath(u"cfg"_s),
                m_home->filePath(u"bin/relay"_s),
                {m_home->filePath(u"bin"_s)}};
    }
    QStringList write() const { return writeHostManifests(FileCalls::system(), places()); }
    void addProgram(const QString &name) const
    {
        const auto path = m_home->filePath(u"bin/"_s + name);
        put(path, "program");
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    /// Makes Chromium one of the user's browsers; gives the path of its manifest.
    QString chromiumManifest() const
    {
        QDir(m_home->path()).mkpath(u"cfg/chromium"_s);
        return m_home->filePath(u"cfg/chromium/NativeMessagingHosts/"_s + fileName);
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

QUORVEL_TEST(tst_hostManifests, QCoreApplication)
#include "tst_hostManifests.moc"
