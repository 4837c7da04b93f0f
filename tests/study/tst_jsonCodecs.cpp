#include "jsonCodecs.h"
#include "randomRecords.h"
#include "suite.h"

#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;

namespace {

constexpr auto id = "6F9619FF-8B86-4D01-B42D-00CF4FC964FF";

/// A card file of one card whose named value is `value`, JSON text; an empty one leaves the key out.
QByteArray cardFile(const QByteArray &key = {}, const QByteArray &value = {})
{
    QByteArray json;
    const std::pair<QByteArray, QByteArray> values[] = {
        {"id", '"' + QByteArray(id) + '"'},        {"prompt", "\"2+2\""}, {"expectedAnswer", "\"4|four\""},
        {"createdAt", "\"2026-11-20T20:15:30Z\""}, {"correctCount", "3"}, {"wrongCount", "0"}};
    for (const auto &[name, usual] : values) {
        if (name != key)
            json += (json.isEmpty() ? "\"" : ",\"") + name + "\":" + usual;
    }
    if (!value.isEmpty())
        json += ",\"" + key + "\":" + value;
    return "[{" + json + "}]";
}

QByteArray taskFile(const QByteArray &more)
{
    const QByteArray start = R"([{"title":"Read","createdAt":"2026-11-20T20:15:30Z","id":")";
    return start + id + '"' + more + "}]";
}

QDateTime utc(int year, int month, int day, int hour, int minute, int second)
{
    return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
}

StudyCard soleCard(const QByteArray &json)
{
    const auto cards = decodeStudyCards(json);
    return cards.ok() && cards.value().size() == 1 ? cards.value().front() : StudyCard();
}

/// The same by the JSON library's own writer, with texts that were made whole.
template <typename Value>
nlohmann::ordered_json plain(const Value &value)
{
    if constexpr (std::is_same_v<Value, QString>) {
        return QString::fromUcs4(reinterpret_cast<const char32_t *>(value.toUcs4().constData()),
                                 value.toUcs4().size())
            .toStdString();
    } else if constexpr (std::is_same_v<Value, QUuid>) {
        return value.toString(QUuid::WithoutBraces).toUpper().toStdString();
    } else if constexpr (std::is_same_v<Value, QDateTime>) {
        return value.toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'"_s).toStdString();
    } else if constexpr (std::is_same_v<Value, QStringList>) {
        auto list = nlohmann::ordered_json::array();
        for (const auto &text : value)
            list.push_back(plain(text));
        return list;
    } else {
        return value;
    }
}

template <typename Value>
void put(nlohmann::ordered_json &object, const char *key, const Value &value)
{
    object[key] = plain(value);
}
template <typename Value>
void put(nlohmann::ordered_json &object, const char *key, const std::optional<Value> &value)
{
    if (value)
        object[key] = plain(*value);
}

QByteArray dump(const nlohmann::ordered_json &json)
{
    return QByteArray::fromStdString(json.dump());
}

nlohmann::ordered_json plainCard(const StudyCard &card)
{
    nlohmann::ordered_json object;
    put(object, "id", card.id);
    put(object, "topic", card.topic);
    put(object, "prompt", card.prompt);
    put(object, "expectedAnswer", card.expectedAnswer);
    put(object, "createdAt", card.createdAt);
    put(object, "correctCount", card.correctCount);
    put(object, "wrongCount", card.wrongCount);
    put(object, "lastAskedAt", card.lastAskedAt);
    put(object, "lastCorrectAt", card.lastCorrectAt);
    return object;
}

nlohmann::ordered_json plainTask(const StudyTask &task)
{
    nlohmann::ordered_json object;
    put(object, "id", task.id);
    put(object, "title", task.title);
    put(object, "createdAt", task.createdAt);
    put(object, "completedAt", task.completedAt);
    put(object, "completedSessionID", task.completedSessionID);
    put(object, "sourceCardID", task.sourceCardID);
    return object;
}

nlohmann::ordered_json plainProgress(const UserProgress &progress)
{
    nlohmann::ordered_json object;
    put(object, "totalXP", progress.totalXP);
    put(object, "totalFocusSeconds", progress.totalFocusSeconds);
    put(object, "totalCompletedSessions", progress.totalCompletedSessions);
    put(object, "totalCardProofs", progress.totalCardProofs);
    put(object, "currentStreak", progress.currentStreak);
    put(object, "longestStreak", progress.longestStreak);
    put(object, "lastCompletedStudyDay", progress.lastCompletedStudyDay);
    put(object, "earnedTitles", progress.earnedTitles);
    return object;
}

nlohmann::ordered_json plainConfig(const QuorvelConfig &config)
{
    nlohmann::ordered_json object;
    put(object, "studyMinutes", config.studyMinutes);
    put(object, "breakMinutes", config.breakMinutes);
    put(object, "maxIdleSeconds", config.maxIdleSeconds);
    put(object, "requiredProofsToUnlock", config.requiredProofsToUnlock);
    put(object, "blockedApps", config.blockedApps);
    put(object, "blockedDomains", config.blockedDomains);
    put(object, "allowedStudyDomains", config.allowedStudyDomains);
    put(object, "allowedStudyApps", config.allowedStudyApps);
    put(object, "blocklistPresetVersion", config.blocklistPresetVersion);
    return object;
}

} // namespace

class tst_jsonCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aCardIsWrittenInFieldOrder();
    void aTaskIsWrittenInFieldOrder();
    void whatIsNotThereIsLeftOut();
    void textsAreEscapedAsNeeded();
    void halfASurrogatePairIsWrittenAsReplacement();
    void anImpossibleTimeIsWrittenAsOneThatCanBeRead();
    void writesAsTheJsonLibraryDoes();
    void readsWhatWasWritten();
    void optionalKeysMayBeMissingOrNull();
    void timesAreRead_data();
    void timesAreRead();
    void wrongTimesFail_data();
    void wrongTimesFail();
    void idsAreReadInEitherCase();
    void wrongIdsFail_data();
    void wrongIdsFail();
    void numbersAreExact_data();
    void numbersAreExact();
    void wrongNumbersFail_data();
    void wrongNumbersFail();
    void wrongFilesFail_data();
    void wrongFilesFail();
    void reasonsNameTheRecordAndTheKey();
    void oneBadRecordFailsTheList();
    void unknownKeysArePassedOver();
    void ofAKeyThatComesTwiceTheLastCounts();
    void anyDepthInAnUnknownKeyIsPassedOver();
    void everyTruncationFails();
    void aByteOrderMarkIsNoMistake();
};

void tst_jsonCodecs::aCardIsWrittenInFieldOrder()
{
    StudyCard card{QUuid(QString::fromLatin1(id)), u"Maths"_s, u"2+2"_s, u"4|four"_s,
                   utc(2026, 11, 20, 20, 15, 30),  3,          1,        utc(2026, 11, 21, 9, 5, 0),
                   utc(2026, 11, 21, 9, 4, 59)};
    QCOMPARE(
        encodeStudyCards({card}),
        R"([{"id":"6F9619FF-8B86-4D01-B42D-00CF4FC964FF","topic":"Maths","prompt":"2+2",)"
        R"("expectedAnswer":"4|four","createdAt":"2026-11-20T20:15:30Z","correctCount":3,"wrongCount":1,)"
        R"("lastAskedAt":"2026-11-21T09:05:00Z","lastCorrectAt":"2026-11-21T09:04:59Z"}])"_ba);
}

void tst_jsonCodecs::aTaskIsWrittenInFieldOrder()
{
    const QUuid uuid(QString::fromLatin1(id));
    StudyTask task{uuid, u"Read"_s, utc(2026, 11, 20, 20, 15, 30), utc(2026, 11, 21, 0, 0, 0), uuid, uuid};
    QCOMPARE(
        encodeStudyTasks({task}),
        R"([{"id":"6F9619FF-8B86-4D01-B42D-00CF4FC964FF","title":"Read","createdAt":"2026-11-20T20:15:30Z",)"
        R"("completedAt":"2026-11-21T00:00:00Z","completedSessionID":"6F9619FF-8B86-4D01-B42D-00CF4FC964FF",)"
        R"("sourceCardID":"6F9619FF-8B86-4D01-B42D-00CF4FC964FF"}])"_ba);
}

void tst_jsonCodecs::whatIsNotThereIsLeftOut()
{
    QCOMPARE(encodeStudyCards({}), "[]"_ba);
    QCOMPARE(encodeStudyTasks({}), "[]"_ba);
    const auto task = encodeStudyTasks({{QUuid(), u"Read"_s, utc(2026, 1, 1, 0, 0, 0), {}, {}, {}}});
    QCOMPARE(
        task,
        R"([{"id":"00000000-0000-0000-0000-000000000000","title":"Read","createdAt":"2026-01-01T00:00:00Z"}])"_ba);
    // A moment of any zone is written in UTC and cut to whole seconds.
    const QDateTime moment(QDate(2026, 1, 1), QTime(1, 59, 59, 999), Qt::OffsetFromUTC, 2 * 3600);
    QVERIFY(encodeStudyTasks({{QUuid(), {}, moment, {}, {}, {}}}).contains("\"2025-12-31T23:59:59Z\""));
}

void tst_jsonCodecs::textsAreEscapedAsNeeded()
{
    StudyTask task;
    task.title = u"\"\\/\b\f\n\r\t\u0001\u001f\u007f é я € 😀"_s + QChar(0);
    QVERIFY(encodeStudyTasks({task}).contains(
        "\"title\":\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f \u00e9 \u044f \u20ac \U0001F600\\u0000\""));
}

void tst_jsonCodecs::halfASurrogatePairIsWrittenAsReplacement()
{
    StudyTask task;
    for (const auto &half : {QString(QChar(0xD83D)), QString(QChar(0xDE00)), u"a"_s + QChar(0xD83D) + u'b',
                             QString(QChar(0xDE00)) + QChar(0xD83D)}) {
        task.title = half;
        const auto json = encodeStudyTasks({task});
        const auto read = decodeStudyTasks(json);
        QVERIFY2(read.ok(), json.constData());
        QString whole = half;
        for (QChar &unit : whole)
            unit = unit.isSurrogate() ? QChar(QChar::ReplacementCharacter) : unit;
        QCOMPARE(read.value().front().title, whole);
    }
}

void tst_jsonCodecs::anImpossibleTimeIsWrittenAsOneThatCanBeRead()
{
    StudyTask task;
    const std::pair<QDateTime, QDateTime> times[] = {
        {{}, utc(1970, 1, 1, 0, 0, 0)},
        {utc(10'000, 1, 1, 0, 0, 0), utc(9999, 12, 31, 23, 59, 59)},
        {utc(-1, 12, 31, 23, 59, 59), utc(1, 1, 1, 0, 0, 0)},
        {QDateTime::fromMSecsSinceEpoch(std::numeric_limits<qint64>::max(), Qt::UTC),
         utc(9999, 12, 31, 23, 59, 59)}};
    for (const auto &[time, written] : times) {
        task.createdAt = time;
        const auto read = decodeStudyTasks(encodeStudyTasks({task}));
        QVERIFY(read.ok());
        QCOMPARE(read.value().front().createdAt, written);
    }
}

void tst_jsonCodecs::writesAsTheJsonLibraryDoes()
{
    for (quint32 seed = 0; seed < 300; ++seed) {
        RandomRecords random(seed);
        auto cards = nlohmann::ordered_json::array();
        auto tasks = nlohmann::ordered_json::array();
        const auto allCards = random.cards();
        const auto allTasks = random.tasks();
        for (const auto &card : allCards)
            cards.push_back(plainCard(card));
        for (const auto &task : allTasks)
            tasks.push_back(plainTask(task));
        const auto config = random.config();
        const auto progress = random.progress();
        QCOMPARE(encodeStudyCards(allCards), dump(cards));
        QCOMPARE(encodeStudyTasks(allTasks), dump(tasks));
        QCOMPARE(encodeConfig(config), dump(plainConfig(config)));
        QCOMPARE(encodeUserProgress(progress), dump(plainProgress(progress)));
    }
}

void tst_jsonCodecs::readsWhatWasWritten()
{
    for (quint32 seed = 1000; seed < 1300; ++seed) {
        RandomRecords random(seed);
        const auto cards = random.cards();
        const auto tasks = random.tasks();
        const auto config = random.config();
        const auto progress = random.progress();
        QVERIFY(decodeStudyCards(encodeStudyCards(cards)).value() == cards);
        QVERIFY(decodeStudyTasks(encodeStudyTasks(tasks)).value() == tasks);
        QVERIFY(decodeConfig(encodeConfig(config)).value() == config);
        QVERIFY(decodeUserProgress(encodeUserProgress(progress)).value() == progress);
    }
}

void tst_jsonCodecs::optionalKeysMayBeMissingOrNull()
{
    const auto card = soleCard(cardFile());
    QCOMPARE(card.prompt, u"2+2"_s);
    QCOMPARE(card.correctCount, 3);
    QVERIFY(!card.topic && !card.lastAskedAt && !card.lastCorrectAt);
    for (const char *key : {"topic", "lastAskedAt", "lastCorrectAt"})
        QCOMPARE(soleCard(cardFile(key, "null")), card);
    QCOMPARE(soleCard(cardFile("topic", "\"\"")).topic, std::optional(u""_s)); // empty is not absent

    const auto task = decodeStudyTasks(taskFile({}));
    const auto nulls =
        decodeStudyTasks(taskFile(R"(,"completedAt":null,"completedSessionID":null,"sourceCardID":null)"));
    QVERIFY(task.ok() && nulls.ok());
    QCOMPARE(task.value().front(), nulls.value().front());
}

void tst_jsonCodecs::timesAreRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("UTC") << "2026-11-20T20:15:30Z"_ba << utc(2026, 11, 20, 20, 15, 30);
    QTest::newRow("ahead of UTC") << "2026-11-20T23:15:30+03:00"_ba << utc(2026, 11, 20, 20, 15, 30);
    QTest::newRow("behind UTC") << "2026-11-20T15:45:30-04:30"_ba << utc(2026, 11, 20, 20, 15, 30);
    QTest::newRow("no offset") << "2026-11-20T20:15:30-00:00"_ba << utc(2026, 11, 20, 20, 15, 30);
    QTest::newRow("leap day") << "2028-02-29T00:00:00Z"_ba << utc(2028, 2, 29, 0, 0, 0);
    QTest::newRow("leap day of a century") << "2000-02-29T00:00:00Z"_ba << utc(2000, 2, 29, 0, 0, 0);
    QTest::newRow("before 1970") << "1969-12-31T23:59:59Z"_ba << utc(1969, 12, 31, 23, 59, 59);
    QTest::newRow("first") << "0001-01-01T00:00:00Z"_ba << utc(1, 1, 1, 0, 0, 0);
    QTest::newRow("last") << "9999-12-31T23:59:59Z"_ba << utc(9999, 12, 31, 23, 59, 59);
}

void tst_jsonCodecs::timesAreRead()
{
    QFETCH(QByteArray, text);
    QFETCH(QDateTime, time);
    const auto card = soleCard(cardFile("createdAt", '"' + text + '"'));
    QCOMPARE(card.createdAt, time);
    QCOMPARE(card.createdAt.timeSpec(), Qt::UTC);
}

void tst_jsonCodecs::wrongTimesFail_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"",
                             "2026-11-20",
                             "2026-11-20T20:15Z",
                             "2026-11-20T20:15:30",
                             "2026-11-20T20:15:30.5Z",
                             "2026-11-20T20:15:30.000Z",
                             "2026-11-20 20:15:30Z",
                             "2026-11-20t20:15:30Z",
                             "2026-11-20T20:15:30z",
                             "2026-11-20T20:15:30Z ",
                             " 2026-11-20T20:15:30Z",
                             "2026-11-20T20:15:30+0300",
                             "2026-11-20T20:15:30+03",
                             "2026-11-20T20:15:30+24:00",
                             "2026-11-20T20:15:30+03:60",
                             "2026-11-20T20:15:30Z+03:00",
                             "20261120T201530Z",
                             "2026-13-01T00:00:00Z",
                             "2026-00-01T00:00:00Z",
                             "2026-02-29T00:00:00Z",
                             "1900-02-29T00:00:00Z",
                             "2026-04-31T00:00:00Z",
                             "2026-11-00T00:00:00Z",
                             "2026-11-20T24:00:00Z",
                             "2026-11-20T20:60:00Z",
                             "2026-11-20T20:15:61Z",
                             "2016-12-31T23:59:60Z",
                             "0000-01-01T00:00:00Z",
                             "0001-01-01T00:00:00+00:01",
                             "9999-12-31T23:59:59-00:01",
                             "+2026-11-20T20:15:30Z",
                             "-026-11-20T20:15:30Z",
                             "12026-11-20T20:15:30Z",
                             "2026-1a-20T20:15:30Z",
                             "\xD9\xA2"
                             "026-11-20T20:15:30Z"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
}

void tst_jsonCodecs::wrongTimesFail()
{
    QFETCH(QByteArray, text);
    for (const char *key : {"createdAt", "lastAskedAt"})
        QVERIFY(!decodeStudyCards(cardFile(key, '"' + text + '"')).ok());
}

void tst_jsonCodecs::idsAreReadInEitherCase()
{
    for (const char *text :
         {id, "6f9619ff-8b86-4d01-b42d-00cf4fc964ff", "6f9619FF-8B86-4d01-B42D-00cf4FC964ff"})
        QCOMPARE(soleCard(cardFile("id", '"' + QByteArray(text) + '"')).id, QUuid(QString::fromLatin1(id)));
}

void tst_jsonCodecs::wrongIdsFail_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"", "{6F9619FF-8B86-4D01-B42D-00CF4FC964FF}", "6F9619FF8B864D01B42D00CF4FC964FF",
                             "6F9619FF-8B86-4D01-B42D-00CF4FC964F", "6F9619FF-8B86-4D01-B42D-00CF4FC964FF0",
                             "6F9619FF-8B86-4D01-B42D00-CF4FC964FF", "6F9619FG-8B86-4D01-B42D-00CF4FC964FF",
                             " 6F9619FF-8B86-4D01-B42D-00CF4FC964FF", "6F9619FF-8B86-4D01-B42D-00CF4FC964FF ",
                             "0x9619FF-8B86-4D01-B42D-00CF4FC964FF"})
        QTest::newRow(*text ? text : "empty") << QByteArray(text);
}

void tst_jsonCodecs::wrongIdsFail()
{
    QFETCH(QByteArray, text);
    QVERIFY(!decodeStudyCards(cardFile("id", '"' + text + '"')).ok());
    QVERIFY(!decodeStudyTasks(taskFile(",\"sourceCardID\":\"" + text + '"')).ok());
}

void tst_jsonCodecs::numbersAreExact_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<qint64>("number");
    QTest::newRow("0") << "0"_ba << qint64(0);
    QTest::newRow("-0") << "-0"_ba << qint64(0);
    QTest::newRow("largest") << "9223372036854775807"_ba << std::numeric_limits<qint64>::max();
    QTest::newRow("smallest") << "-9223372036854775808"_ba << std::numeric_limits<qint64>::min();
    QTest::newRow("beyond a float") << "9007199254740993"_ba << qint64(9007199254740993);
}

void tst_jsonCodecs::numbersAreExact()
{
    QFETCH(QByteArray, text);
    QFETCH(qint64, number);
    QCOMPARE(soleCard(cardFile("wrongCount", text)).wrongCount, number);
}

void tst_jsonCodecs::wrongNumbersFail_data()
{
    QTest::addColumn<QByteArray>("text");
    for (const char *text : {"1.0", "1e3", "9223372036854775808", "-9223372036854775809",
                             "18446744073709551615", "99999999999999999999999999", "\"1\"", "true", "null",
                             "[]", "[1]", "{}", "01", "+1", "0x1", "NaN", "1e999", "-"})
        QTest::newRow(text) << QByteArray(text);
}

void tst_jsonCodecs::wrongNumbersFail()
{
    QFETCH(QByteArray, text);
    QVERIFY(!decodeStudyCards(cardFile("correctCount", text)).ok());
}

void tst_jsonCodecs::wrongFilesFail_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("empty") << ""_ba;
    QTest::newRow("blank") << " \n"_ba;
    QTest::newRow("object") << "{}"_ba;
    QTest::newRow("null") << "null"_ba;
    QTest::newRow("number") << "1"_ba;
    QTest::newRow("text") << "\"[]\""_ba;
    QTest::newRow("null in the list") << "[null]"_ba;
    QTest::newRow("number in the list") << "[1]"_ba;
    QTest::newRow("list in the list") << "[[]]"_ba;
    QTest::newRow("record of nothing") << "[{}]"_ba;
    QTest::newRow("more after the end") << cardFile() + "[]";
    QTest::newRow("comma at the end") << cardFile().chopped(1) + ",]";
    QTest::newRow("comment") << cardFile() + "// mine";
    QTest::newRow("NUL after the end") << cardFile() + '\0';
    QTest::newRow("NUL and more after the end") << cardFile() + '\0' + "mine";
    QTest::newRow("NUL in a text") << cardFile("topic", QByteArray("\"a\0b\"", 5));
    QTest::newRow("only NUL") << QByteArray(4096, '\0');
    QTest::newRow("invalid UTF-8") << cardFile("prompt", "\"\xFF\"");
    QTest::newRow("UTF-8 cut short") << cardFile("prompt", "\"\xE2\x82\"");
    QTest::newRow("overlong UTF-8") << cardFile("prompt", "\"\xC0\xAF\"");
    QTest::newRow("surrogate in UTF-8") << cardFile("prompt", "\"\xED\xA0\x80\"");
    QTest::newRow("invalid UTF-8 in an unknown key") << cardFile("later", "\"\xFF\"");
    QTest::newRow("half a surrogate pair") << cardFile("prompt", R"("\ud83d")");
    QTest::newRow("control character") << cardFile("prompt", "\"\n\"");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE[\0]\0", 6);
    for (const char *key : {"id", "prompt", "expectedAnswer", "createdAt", "correctCount", "wrongCount"}) {
        QTest::addRow("without %s", key) << cardFile(key);
        QTest::addRow("null for %s", key) << cardFile(key, "null");
        QTest::addRow("list for %s", key) << cardFile(key, "[\"a\"]");
        QTest::addRow("object for %s", key) << cardFile(key, "{\"a\":1}");
        QTest::addRow("boolean for %s", key) << cardFile(key, "true");
    }
    for (const char *key :
         {"id", "topic", "prompt", "expectedAnswer", "createdAt", "lastAskedAt", "lastCorrectAt"})
        QTest::addRow("number for %s", key) << cardFile(key, "1");
    for (const char *key : {"topic", "lastAskedAt", "lastCorrectAt"}) {
        QTest::addRow("list for %s", key) << cardFile(key, "[]");
        QTest::addRow("object for %s", key) << cardFile(key, "{}");
        QTest::addRow("boolean for %s", key) << cardFile(key, "false");
    }
    QTest::newRow("key in another case") << cardFile("prompt").chopped(2) + ",\"Prompt\":\"a\"}]";
}

void tst_jsonCodecs::wrongFilesFail()
{
    QFETCH(QByteArray, json);
    const auto cards = decodeStudyCards(json);
    QVERIFY(!cards.ok());
    QVERIFY(!cards.reason().isEmpty());
}

void tst_jsonCodecs::reasonsNameTheRecordAndTheKey()
{
    const auto good = cardFile();
    QCOMPARE(decodeStudyCards(good.chopped(1) + ',' + cardFile("wrongCount").mid(1)).reason(),
             u"\"wrongCount\" of record 2 is missing"_s);
    QCOMPARE(decodeStudyCards(cardFile("topic", "7")).reason(), u"\"topic\" of record 1 has a wrong value"_s);
    QCOMPARE(decodeStudyCards("{}").reason(), u"not a JSON array"_s);
    QCOMPARE(decodeStudyCards("[7]").reason(), u"not a JSON object"_s);
    QCOMPARE(decodeConfig("[]").reason(), u"not a JSON object"_s);
    QCOMPARE(decodeConfig("{").reason(), u"not valid JSON"_s);
}

void tst_jsonCodecs::oneBadRecordFailsTheList()
{
    const auto good = cardFile().mid(1).chopped(1);
    const auto bad = cardFile("id", "\"x\"").mid(1).chopped(1);
    QCOMPARE(decodeStudyCards('[' + good + ',' + good + ']').value().size(), std::size_t(2));
    QVERIFY(!decodeStudyCards('[' + good + ',' + bad + ']').ok());
    QVERIFY(!decodeStudyCards('[' + bad + ',' + good + ']').ok());
}

void tst_jsonCodecs::unknownKeysArePassedOver()
{
    const auto card = soleCard(cardFile());
    for (const char *value : {"1", "-1", "1.5", "18446744073709551615", "true", "null", "\"a\"", "[]", "{}",
                              "[[],[{}]]", R"({"id":1,"prompt":[],"deep":{"topic":"no"}})"})
        QCOMPARE(soleCard(cardFile("later", value)), card);
    const auto first = "[{\"later\":{\"id\":[]}," + cardFile().mid(2);
    QCOMPARE(soleCard(first), card);
}

void tst_jsonCodecs::ofAKeyThatComesTwiceTheLastCounts()
{
    const auto twice = [](const QByteArray &more) { return cardFile().chopped(2) + more + "}]"; };
    QCOMPARE(soleCard(twice(R"(,"prompt":"last")")).prompt, u"last"_s);
    QCOMPARE(soleCard(twice(R"(,"topic":"a","topic":"b")")).topic, std::optional(u"b"_s));
    QCOMPARE(soleCard(twice(R"(,"topic":"a","topic":null)")).topic, std::nullopt);
    QVERIFY(!decodeStudyCards(twice(R"(,"prompt":null)")).ok());
    QVERIFY(!decodeStudyCards(twice(R"(,"topic":7,"topic":"a")")).ok());
    QCOMPARE(decodeConfig(R"({"blockedApps":["a","b"],"blockedApps":["c"]})").value().blockedApps,
             QStringList{u"c"_s});
    QCOMPARE(decodeConfig(R"({"studyMinutes":7,"studyMinutes":null})").value().studyMinutes, 25);
}

void tst_jsonCodecs::anyDepthInAnUnknownKeyIsPassedOver()
{
    constexpr int depth = 100'000;
    const auto lists = QByteArray("[").repeated(depth) + QByteArray("]").repeated(depth);
    const auto objects = QByteArray("{\"a\":").repeated(depth) + '1' + QByteArray("}").repeated(depth);
    const auto card = soleCard(cardFile());
    QCOMPARE(soleCard(cardFile("later", lists)), card);
    QCOMPARE(soleCard(cardFile("later", objects)), card);
    QVERIFY(decodeConfig("{\"later\":" + objects + '}').ok());
    QVERIFY(!decodeStudyCards(QByteArray("[").repeated(depth)).ok());
    QVERIFY(!decodeStudyCards(cardFile("topic", lists)).ok());
    QVERIFY(!decodeUserProgress(QByteArray("{\"a\":").repeated(depth)).ok());
}

void tst_jsonCodecs::everyTruncationFails()
{
    const auto cards = cardFile("topic", "\"\u044f\"");
    QVERIFY(decodeStudyCards(cards).ok());
    for (qsizetype length = 0; length < cards.size(); ++length)
        QVERIFY(!decodeStudyCards(cards.left(length)).ok());
    const auto config = encodeConfig(QuorvelConfig::defaults());
    for (qsizetype length = 0; length < config.size(); ++length)
        QVERIFY(!decodeConfig(config.left(length)).ok());
}

void tst_jsonCodecs::aByteOrderMarkIsNoMistake()
{
    QCOMPARE(soleCard("\xEF\xBB\xBF" + cardFile()), soleCard(cardFile()));
    QVERIFY(!decodeStudyCards("\xEF\xBB" + cardFile()).ok());
    QVERIFY(!decodeStudyCards(cardFile() + "\xEF\xBB\xBF").ok());
}

QUORVEL_TEST(tst_jsonCodecs)
#include "tst_jsonCodecs.moc"
