#include "QuorvelConfig.h"
#include "builtInLists.h"
#include "jsonCodecs.h"
#include "settingsDrafts.h"
#include "suite.h"
#include "textLists.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

class TestQuorvelConfig : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults()
    {
        const auto &config = QuorvelConfig::defaults();
        QCOMPARE(config.studyMinutes, 25);
        QCOMPARE(config.breakMinutes, 45);
        QCOMPARE(config.maxIdleSeconds, 180);
        QCOMPARE(config.requiredProofsToUnlock, 0);
        QCOMPARE(config.blockedApps.size(), 27);
        QCOMPARE(config.blockedApps.first(), u"Steam"_s);
        QCOMPARE(config.blockedApps.last(), u"Music"_s);
        QCOMPARE(config.blockedDomains.size(), 34);
        QCOMPARE(config.allowedStudyDomains, QStringList());
        QCOMPARE(config.allowedStudyApps.size(), 14);
        QCOMPARE(config.allowedStudyApps.first(), u"Preview"_s);
        QCOMPARE(config.allowedStudyApps.last(), u"Finder"_s);
        QCOMPARE(config.blocklistPresetVersion, 2);
    }

    void builtInApplicationsAreTheseInThisOrder()
    {
        // A name that differs by a letter blocks nothing, and what is merged into older settings stays there.
        QCOMPARE(builtInBlockedApps().join(u", "_s),
                 u"Steam, Discord, Telegram, WhatsApp, Slack, Zoom, Epic Games Launcher, Battle.net, "
                 "EA app, Origin, Ubisoft Connect, GOG Galaxy, Riot Client, Roblox, Minecraft, "
                 "League of Legends, Dota, Counter-Strike, Fortnite, World of Warcraft, Overwatch, "
                 "Valorant, Genshin Impact, HoYoPlay, osu!, Spotify, Music"_s);
        QCOMPARE(builtInAllowedStudyApps().join(u", "_s),
                 u"Preview, Books, Safari, Google Chrome, Brave Browser, Microsoft Edge, Arc, Anki, "
                 "Obsidian, Notion, Notes, Pages, TextEdit, Finder"_s);
    }

    void builtInDomainsAreBareLowerCaseAndDistinct()
    {
        static const QRegularExpression registrable(u"^[a-z0-9-]+\\.[a-z]{2,}$"_s);
        const auto domains = builtInBlockedDomains();
        for (const auto &domain : domains)
            QVERIFY2(registrable.match(domain).hasMatch() && !domain.startsWith(u"www."), qPrintable(domain));
        QCOMPARE(removingDuplicates(domains), domains);
    }

    void removingDuplicatesKeepsFirstAndOrder()
    {
        QCOMPARE(removingDuplicates({u"b"_s, u"a"_s, u"B"_s, u"b"_s, u"a"_s}),
                 QStringList({u"b"_s, u"a"_s, u"B"_s}));
    }

    void orderOfAListMatters()
    {
        QuorvelConfig left;
        left.blockedApps = {u"a"_s, u"b"_s};
        auto right = left;
        QCOMPARE(left, right);
        right.blockedApps = {u"b"_s, u"a"_s};
        QVERIFY(left != right);
    }

    void migrationOfVersion1KeepsOwnEntriesFirst()
    {
        QuorvelConfig config;
        config.blockedApps = {u"Steam"_s, u"My Game"_s};
        config.blockedDomains = {u"games.example"_s, u"youtube.com"_s};
        config.allowedStudyApps = {u"Zotero"_s};
        config.blocklistPresetVersion = 1;
        QVERIFY(needsBlocklistMigration(config));
        const auto merged = withBuiltInBlocklists(config);
        QCOMPARE(merged.blockedApps.size(), 28);
        QCOMPARE(merged.blockedApps.mid(0, 3), QStringList({u"Steam"_s, u"My Game"_s, u"Discord"_s}));
        QCOMPARE(merged.blockedApps.count(u"Steam"_s), 1);
        QCOMPARE(merged.blockedDomains.size(), 35);
        QCOMPARE(merged.blockedDomains.mid(0, 3),
                 QStringList({u"games.example"_s, u"youtube.com"_s, u"youtu.be"_s}));
        QCOMPARE(merged.allowedStudyApps, QStringList({u"Zotero"_s}));
        QCOMPARE(merged.allowedStudyDomains, QStringList());
        QCOMPARE(merged.blocklistPresetVersion, 2);
    }

    void entryDifferingOnlyInCaseIsKeptBesideTheBuiltInOne()
    {
        const auto merged = mergedWithBuiltIn({u"STEAM"_s}, builtInBlockedApps());
        QCOMPARE(merged.mid(0, 2), QStringList({u"STEAM"_s, u"Steam"_s}));
    }

    void presentAndLaterVersionsAreNotMigrated()
    {
        QuorvelConfig config;
        config.blocklistPresetVersion = 2;
        QVERIFY(!needsBlocklistMigration(config));
        config.blocklistPresetVersion = 7;
        QVERIFY(!needsBlocklistMigration(config));
        config.blocklistPresetVersion = -1;
        QVERIFY(needsBlocklistMigration(config));
    }

    void missingKeysTakeDefaultsButPresetVersionIsZero()
    {
        const auto decoded = decodeConfig(R"({"studyMinutes": 50})");
        QVERIFY(decoded.ok());
        auto expected = QuorvelConfig::defaults();
        expected.studyMinutes = 50;
        expected.blocklistPresetVersion = 0;
        QCOMPARE(decoded.value(), expected);
    }

    void nullKeysCountAsMissing()
    {
        const auto decoded =
            decodeConfig(R"({"breakMinutes": null, "blockedApps": null, "blocklistPresetVersion": null})");
        QVERIFY(decoded.ok());
        QCOMPARE(decoded.value().breakMinutes, 45);
        QCOMPARE(decoded.value().blockedApps, builtInBlockedApps());
        QCOMPARE(decoded.value().blocklistPresetVersion, 0);
    }

    void wrongSettingsFail_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty file") << ""_ba;
        QTest::newRow("truncated") << R"({"studyMinutes": 2)"_ba;
        QTest::newRow("not an object") << "[1]"_ba;
        QTest::newRow("null") << "null"_ba;
        QTest::newRow("trailing text") << "{} x"_ba;
        QTest::newRow("text for a number") << R"({"studyMinutes": "25"})"_ba;
        QTest::newRow("fraction for a number") << R"({"studyMinutes": 25.5})"_ba;
        QTest::newRow("boolean for a number") << R"({"studyMinutes": true})"_ba;
        QTest::newRow("above 64 bits") << R"({"studyMinutes": 9223372036854775808})"_ba;
        QTest::newRow("below 64 bits") << R"({"studyMinutes": -9223372036854775809})"_ba;
        QTest::newRow("text for a list") << R"({"blockedApps": "Steam"})"_ba;
        QTest::newRow("number in a list") << R"({"blockedApps": ["Steam", 1]})"_ba;
        QTest::newRow("null in a list") << R"({"blockedApps": [null]})"_ba;
        QTest::newRow("version of wrong type") << R"({"blocklistPresetVersion": "2"})"_ba;
        QTest::newRow("invalid UTF-8") << "{\"blockedApps\": [\"\xff\"]}"_ba;
    }
    void wrongSettingsFail()
    {
        QFETCH(QByteArray, json);
        const auto decoded = decodeConfig(json);
        QVERIFY(!decoded.ok());
        QVERIFY(!decoded.reason().isEmpty());
    }

    void unknownKeysArePassedOver()
    {
        QVERIFY(decodeConfig(R"({"studyMinutes": 30, "later": {"deep": [1, 2]}})").ok());
    }

    void encodingIsCompactAndInFieldOrder()
    {
        QuorvelConfig config;
        config.studyMinutes = std::numeric_limits<qint64>::max();
        config.breakMinutes = std::numeric_limits<qint64>::min();
        config.blockedApps = {u"A \"quoted\" name"_s};
        config.blockedDomains = {u"пример.рф"_s};
        QCOMPARE(encodeConfig(config),
                 "{\"studyMinutes\":9223372036854775807,\"breakMinutes\":-9223372036854775808,"
                 "\"maxIdleSeconds\":180,"
                 "\"requiredProofsToUnlock\":0,\"blockedApps\":[\"A \\\"quoted\\\" name\"],"
                 "\"blockedDomains\":[\"пример.рф\"],\"allowedStudyDomains\":[],\"allowedStudyApps\":[],"
                 "\"blocklistPresetVersion\":0}"_ba);
    }

    void encodedSettingsDecodeEqual()
    {
        auto config = QuorvelConfig::defaults();
        config.maxIdleSeconds = -5;
        config.allowedStudyDomains = {QString(), u"line\nbreak"_s, u"😀"_s, u"a\0b"_s};
        const auto decoded = decodeConfig(encodeConfig(config));
        QVERIFY(decoded.ok());
        QCOMPARE(decoded.value(), config);
    }

    void draftsArePlainDecimalTextAndLines()
    {
        QuorvelConfig config;
        config.studyMinutes = 1200;
        config.breakMinutes = -3;
        config.blockedApps = {u"One"_s, u"Two"_s};
        const auto drafts = draftsFrom(config);
        QCOMPARE(drafts.studyMinutesText, u"1200"_s);
        QCOMPARE(drafts.breakMinutesText, u"-3"_s);
        QCOMPARE(drafts.maxIdleSecondsText, u"180"_s);
        QCOMPARE(drafts.requiredProofsText, u"0"_s);
        QCOMPARE(drafts.blockedAppsText, u"One\nTwo"_s);
        QCOMPARE(drafts.blockedDomainsText, QString());
    }
};

QUORVEL_TEST(TestQuorvelConfig)
#include "tst_QuorvelConfig.moc"
