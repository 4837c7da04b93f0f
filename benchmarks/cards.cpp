// What a library of 100,000 cards costs: its file, an answer in the quiz, and a second of a session.

#include "CardBank.h"
#include "FakeBackendClient.h"
#include "FakeBrowserScripting.h"
#include "FakeClock.h"
#include "FakePreferences.h"
#include "FakeRecordFiles.h"
#include "FakeRunningApplications.h"
#include "FakeSystemIdle.h"
#include "FakeUrlOpener.h"
#include "FolderRecordFiles.h"
#include "QuorvelController.h"
#include "RecordStore.h"
#include "jsonCodecs.h"
#include "measurement.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <functional>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int cardCount = 100'000;
constexpr int topicCount = 40;
constexpr int fileRounds = 9;
constexpr int quizRounds = 101;
constexpr int beats = 2001;

constexpr double mostForLoading = 2.0;
constexpr double mostForSaving = 2.0;
constexpr double mostForAHeartbeat = 1.25;

/// A library as years of study leave it: some 150 bytes a card, a third of them asked before.
std::deque<StudyCard> library()
{
    const QDateTime began(QDate(2024, 9, 1), QTime(8, 0), Qt::UTC);
    std::deque<StudyCard> cards;
    for (int number = 0; number < cardCount; ++number) {
        StudyCard card;
        card.id = QUuid::createUuid();
        card.topic = u"Тема %1: Chapter"_s.arg(number % topicCount);
        card.prompt = u"Question %1: что такое производная?"_s.arg(number);
        card.expectedAnswer = u"answer %1|ответ"_s.arg(number);
        card.createdAt = began.addSecs(number);
        if (number % 3 == 0) {
            card.correctCount = number % 7;
            card.wrongCount = number % 2;
            card.lastAskedAt = began.addDays(100).addSecs(number);
        }
        cards.push_front(card);
    }
    return cards;
}

QString aTopic()
{
    return u" тема 7: CHAPTER! "_s;
}

/// Whether two works do the same thing `rounds` times, in turn; gives the medians in milliseconds.
std::pair<double, double> inTurn(int rounds, const std::function<void()> &work,
                                 const std::function<void()> &against)
{
    std::vector<double> first;
    std::vector<double> second;
    for (int round = 0; round < rounds; ++round) {
        first.push_back(timed(work));
        second.push_back(timed(against));
    }
    return {quantile(first, 0.5), quantile(second, 0.5)};
}

void measureLoading(const QString &folder, Figures &figures)
{
    FolderRecordFiles files(folder);
    QFile file(folder + u"/study-cards.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cards: there is no file to load");
    const auto bytes = file.readAll();
    const auto [load, plain] = inTurn(
        fileRounds,
        [&] {
            if (RecordStore(files).loadStudyCards().size() != size_t(cardCount))
                qFatal("cards: not all were loaded");
        },
        [&] {
            if (!QJsonDocument::fromJson(bytes).isArray())
                qFatal("cards: the file holds no list");
        });
    figures.hold("load of 100,000 cards", load / plain, "QJsonDocument::fromJson of the same bytes",
                 mostForLoading);
    figures.report("load of 100,000 cards, median", load, "ms", "nothing");
    figures.report("their file", double(bytes.size()) / 1e6, "MB", "nothing");
}

void writePlainly(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) ||
        file.write(bytes) != bytes.size() || fsync(file.handle()) != 0)
        qFatal("cards: the plain file could not be written");
}

void measureSaving(const QString &folder, std::deque<StudyCard> cards, Figures &figures)
{
    FolderRecordFiles files(folder);
    RecordStore store(files);
    QDateTime now(QDate(2026, 11, 20), QTime(12, 0), Qt::UTC);
    const auto save = [&] {
        ++cards.front().correctCount; // what is saved has changed, as it always has
        if (!store.saveStudyCards(cards, now))
            qFatal("cards: they could not be saved");
    };
    save();
    now = now.addSecs(2 * 60 * 60);
    const auto first = timed(save);
    if (QDir(folder + u"/backups"_s).isEmpty(QDir::Files))
        qFatal("cards: there is no rolling copy");
    const auto [later, plain] =
        inTurn(fileRounds, save, [&] { writePlainly(folder + u"/plain"_s, encodeStudyCards(cards)); });
    figures.hold("save of 100,000 cards", later / plain, "their encoding and a plain write and sync",
                 mostForSaving);
    figures.report("save of 100,000 cards, median", later, "ms", "nothing");
    figures.report("first save of an hour, with its rolling copy", first, "ms", "nothing");
}

/// What the quiz does between the answer and the next card, but for the file.
void answerOne(CardBank &bank, const QString &topic)
{
    const auto row = bank.weakestRow(topic, {});
    const auto asked = bank.cards()[size_t(*row)];
    const auto found = bank.rowOf(asked.id);
    const bool correct = bank.accepts(*found, u"answer "_s + asked.prompt);
    bank.judge(*found, correct, asked.createdAt.addDays(200));
    (void)bank.weakestRow(topic, {asked.id});
}

void measureQuiz(const std::deque<StudyCard> &cards, Figures &figures)
{
    CardBank bank(cards);
    const auto firstTopic = timed([&] { (void)bank.countOfTopic(aTopic()); });
    qint64 sum = 0;
    const auto barePass = [&] {
        for (const auto &card : bank.cards())
            sum += card.wrongCount - card.correctCount + card.id.data1;
    };
    const auto [answer, pass] = inTurn(
        quizRounds, [&] { answerOne(bank, aTopic()); }, barePass);
    const auto [topic, samePass] = inTurn(
        quizRounds, [&] { sum += bank.countOfTopic(u"тема %1: chapter"_s.arg(sum % topicCount)); }, barePass);
    figures.report("answer in the quiz without its save, median", answer, "ms", "nothing");
    figures.report("the same", answer / pass, "times", "a bare pass over the records");
    figures.report("change of the topic, median", topic, "ms", "nothing");
    figures.report("the same", topic / samePass, "times", "a bare pass over the records");
    figures.report("first topic after the start", firstTopic, "ms", "nothing");
    if (sum == 1)
        printf("\n"); // so that the pass is not optimized away
}

/// A session that counts every second, on a desktop that costs nothing.
struct Session
{
    FakeClock clock;
    FakeSystemIdle idle;
    FakeRunningApplications applications;
    FakeBrowserScripting browsers;
    FakePreferences preferences;
    FakeRecordFiles files;
    FakeBackendClient backend;
    FakeUrlOpener urls;
    std::unique_ptr<QuorvelController> controller;

    Session(const std::deque<StudyCard> &cards, qint64 proofs)
    {
        applications.start(u"Anki"_s);
        auto settings = QuorvelConfig::defaults();
        settings.studyMinutes = 240;
        settings.requiredProofsToUnlock = proofs;
        files.files[u"config.json"_s] = encodeConfig(settings);
        files.files[u"study-cards.json"_s] = encodeStudyCards(cards);
        controller = std::make_unique<QuorvelController>(
            ControllerPorts{clock, idle, applications, browsers, preferences, files, backend, urls});
        controller->setCurrentStudyTopicText(aTopic());
        controller->startStudy();
        if (controller->mode() != QuorvelController::Mode::Studying)
            qFatal("cards: the session did not start");
    }
    void beat()
    {
        clock.advance(1s);
        controller->tick();
        preferences.writes.clear();
    }
};

void measureHeartbeat(const std::deque<StudyCard> &cards, Figures &figures)
{
    Session full(cards, 3);
    Session empty({}, 0);
    const auto [with, without] = inTurn(
        beats, [&] { full.beat(); }, [&] { empty.beat(); });
    if (full.controller->todayStudySeconds() < beats || empty.controller->todayStudySeconds() < beats)
        qFatal("cards: the seconds did not count");
    figures.hold("heartbeat with 100,000 cards", with / without, "the same with none", mostForAHeartbeat);
    figures.report("heartbeat with 100,000 cards, median", with * 1000, "microseconds",
                   "nothing, on a desktop of fakes");
}

} // namespace

int main(int count, char **words)
{
    const QCoreApplication application(count, words);
    const QTemporaryDir folder;
    if (count < 2 || !folder.isValid()) {
        fprintf(stderr, "usage: cards FILE\n");
        return 2;
    }
    const auto cards = library();
    const auto path = folder.filePath(u"data"_s);
    Figures figures;
    measureSaving(path, cards, figures);
    measureLoading(path, figures);
    measureQuiz(cards, figures);
    measureHeartbeat(cards, figures);
    return figures.writeTo(words[1]);
}
