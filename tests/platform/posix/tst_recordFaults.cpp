#include "FailingFileCalls.h"
#include "FolderRecordFiles.h"
#include "RecordStore.h"
#include "copyThinning.h"
#include "jsonCodecs.h"
#include "testFiles.h"

#include <QTest>

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace TestFiles;

/// Every system call of a load and a save fails in turn, and before every one the program is killed. What a
/// start finds then is the old or the new record, and nothing of what was there before is lost.
namespace {

const QDateTime now(QDate(2026, 11, 21), QTime(10, 15, 0), Qt::UTC);
const QByteArray broken = "{\"precious\": \"not decodable\"";

/// One kind of record: what it is called, two states of it, and how the program loads and saves them.
struct Kind
{
    QString file;
    QByteArray oldBytes;
    QByteArray newBytes;
    QByteArray freshBytes; ///< of a fresh start
    std::function<QByteArray(RecordStore &)> load;
    std::function<Result<>(RecordStore &)> saveNew;
};

Kind configKind()
{
    auto config = QuorvelConfig::defaults();
    config.studyMinutes = 50;
    auto other = config;
    other.blockedApps = {u"osu!"_s};
    return {u"config.json"_s,
            encodeConfig(config),
            encodeConfig(other),
            encodeConfig(QuorvelConfig::defaults()),
            [](RecordStore &store) { return encodeConfig(store.loadConfig()); },
            [other](RecordStore &store) { return store.saveConfig(other, now); }};
}

Kind progressKind()
{
    UserProgress progress;
    progress.totalXP = 120;
    auto other = progress;
    other.totalXP = 121;
    return {u"progress.json"_s,
            encodeUserProgress(progress),
            encodeUserProgress(other),
            encodeUserProgress({}),
            [](RecordStore &store) { return encodeUserProgress(store.loadUserProgress()); },
            [other](RecordStore &store) { return store.saveUserProgress(other, now); }};
}

Kind cardsKind()
{
    StudyCard card;
    card.prompt = u"2+2"_s;
    card.createdAt = now;
    const std::deque<StudyCard> cards(3, card);
    const std::deque<StudyCard> others(2, card);
    return {u"study-cards.json"_s,
            encodeStudyCards(cards),
            encodeStudyCards(others),
            "[]",
            [](RecordStore &store) { return encodeStudyCards(store.loadStudyCards()); },
            [others](RecordStore &store) { return store.saveStudyCards(others, now); }};
}

Kind tasksKind()
{
    StudyTask task;
    task.title = u"Read"_s;
    task.createdAt = now;
    const std::deque<StudyTask> tasks(1, task);
    const std::deque<StudyTask> others(4, task);
    return {u"study-tasks.json"_s,
            encodeStudyTasks(tasks),
            encodeStudyTasks(others),
            "[]",
            [](RecordStore &store) { return encodeStudyTasks(store.loadStudyTasks()); },
            [others](RecordStore &store) { return store.saveStudyTasks(others, now); }};
}

Kind kindOf(const QByteArray &kind)
{
    return kind == "config"     ? configKind()
           : kind == "progress" ? progressKind()
           : kind == "cards"    ? cardsKind()
                                : tasksKind();
}

/// What a save meets.
enum Scene {
    NoFile,         ///< nor a folder
    RecentCopy,     ///< no copy is due
    DueCopy,        ///< a copy is made, by a link, and an old one goes
    DueCopyByBytes, ///< the same where links are refused
    FirstCopy,      ///< there is no folder of copies yet
    Undecodable,    ///< the old bytes are kept aside
    UndecodableByBytes,
};

const std::pair<const char *, Scene> scenes[] = {{"no file", NoFile},
                                                 {"recent copy", RecentCopy},
                                                 {"due copy", DueCopy},
                                                 {"due copy by bytes", DueCopyByBytes},
                                                 {"first copy", FirstCopy},
                                                 {"undecodable", Undecodable},
                                                 {"undecodable by bytes", UndecodableByBytes}};

bool isUndecodable(Scene scene)
{
    return scene == Undecodable || scene == UndecodableByBytes;
}

/// Files by their path in the data folder.
using Tree = std::map<QString, QByteArray>;

Tree treeOf(const QString &folder)
{
    Tree tree;
    for (const QString &sub : {u""_s, u"backups/"_s}) {
        for (const QString &name : names(folder + u'/' + sub)) {
            if (QFileInfo(folder + u'/' + sub + name).isFile())
                tree[sub + name] = content(folder + u'/' + sub + name);
        }
    }
    return tree;
}

/// Where a test's folder is. A disk writes out every file that is renamed, so only some tests go there.
enum class Place { Memory, Disk };

class Folder
{
public:
    Folder(const Kind &kind, Scene scene, Place place = Place::Memory)
        : m_home(templateFor(place))
        , m_path(m_home.filePath(u"share/Quorvel"_s))
    {
        const auto copy = [&](qint64 secondsAgo) {
            return path(u"backups/"_s + rollingCopyName(kind.file, now.addSecs(-secondsAgo)));
        };
        if (scene == NoFile)
            return;
        QDir().mkpath(m_path);
        put(path(kind.file), isUndecodable(scene) ? broken : kind.oldBytes);
        if (scene == FirstCopy)
            return;
        QDir().mkpath(path(u"backups"_s));
        put(copy(scene == RecentCopy ? 1800 : 7200), kind.newBytes);
        put(copy(11 * 86400), kind.freshBytes);
        put(copy(11 * 86400 + 60), kind.oldBytes); // its time is over
        put(path(u"backups/mine.txt"_s), "mine");
    }

    QString path(const QString &name = {}) const { return name.isEmpty() ? m_path : m_path + u'/' + name; }
    Tree tree() const { return treeOf(m_path); }

private:
    static QString templateFor(Place place)
    {
        const QString memory = u"/dev/shm"_s;
        const bool inMemory = place == Place::Memory && QFileInfo(memory).isWritable();
        return (inMemory ? memory : QDir::tempPath()) + u"/tst_recordFaults-XXXXXX"_s;
    }

    QTemporaryDir m_home;
    QString m_path;
};

void dropMessage(QtMsgType, const QMessageLogContext &, const QString &)
{}

/// Thousands of expected warnings would bury the one line that counts.
class Quiet
{
public:
    Quiet()
        : m_before(qInstallMessageHandler(dropMessage))
    {}
    ~Quiet() { qInstallMessageHandler(m_before); }
    Q_DISABLE_COPY_MOVE(Quiet)

private:
    QtMessageHandler m_before;
};

Result<> loadAndSave(const Kind &kind, const Folder &folder, FailingFileCalls &calls, Scene scene)
{
    calls.longestWrite = 150;
    if (scene == DueCopyByBytes || scene == UndecodableByBytes)
        calls.failures["link"] = EPERM;
    FolderRecordFiles files(folder.path(), calls);
    RecordStore store(files);
    (void)kind.load(store);
    return kind.saveNew(store);
}

/// The number of system calls without a fault.
int callsOf(const Kind &kind, Scene scene)
{
    const Folder folder(kind, scene);
    FailingFileCalls calls;
    return loadAndSave(kind, folder, calls, scene).ok() ? int(calls.steps.size()) : -1;
}

bool hasBytes(const Tree &tree, const QByteArray &bytes)
{
    return std::any_of(tree.begin(), tree.end(), [&](const auto &file) { return file.second == bytes; });
}

/// What is wrong with what is left, or nothing.
QString wrongIn(const Kind &kind, Scene scene, const Tree &before, const Folder &folder)
{
    const Tree after = folder.tree();
    FolderRecordFiles files(folder.path());
    RecordStore fresh(files);
    const QByteArray loaded = kind.load(fresh);
    const bool isNew = loaded == kind.newBytes;
    const bool hadNone = scene == NoFile || isUndecodable(scene);
    if (!isNew && loaded != (hadNone ? kind.freshBytes : kind.oldBytes))
        return u"neither the old nor the new record"_s;
    if (isUndecodable(scene) && !hasBytes(after, broken))
        return u"the unreadable bytes are gone"_s;
    if (isUndecodable(scene) && !isNew && after.at(kind.file) != broken)
        return u"the unreadable file was changed"_s;

    const QString newest = u"backups/"_s + rollingCopyName(kind.file, now);
    const bool hasNewest = after.contains(newest);
    for (const auto &[name, bytes] : before) {
        const bool mayGo =
            hasNewest && name.contains(rollingCopyName(kind.file, now.addSecs(-11 * 86400 - 60)));
        const auto there = after.find(name);
        if (name.startsWith(u"backups/") && !mayGo && (there == after.end() || there->second != bytes))
            return u"lost "_s + name;
    }
    if (hasNewest && after.at(newest) != kind.oldBytes)
        return u"a copy that is not whole"_s;
    for (const auto &[name, bytes] : after) {
        const bool known = before.contains(name) || name == kind.file || name == newest ||
                           name.contains(u".unreadable-") || name == u"."_s + kind.file + u".new"_s ||
                           name == u"backups/."_s + kind.file + u".new"_s;
        if (!known)
            return u"left behind "_s + name;
    }
    return {};
}

/// A save after the next start is as good as ever, and takes away what a crash left.
QString wrongInNextSave(const Kind &kind, Scene scene, const Folder &folder)
{
    FailingFileCalls calls;
    const auto saved = loadAndSave(kind, folder, calls, scene);
    if (!saved.ok())
        return u"the next save fails: "_s + saved.reason();
    const Tree after = folder.tree();
    if (after.at(kind.file) != kind.newBytes)
        return u"the next save does not save"_s;
    if (after.contains(u"."_s + kind.file + u".new"_s))
        return u"the next save leaves its temporary file"_s;
    return {};
}

/// Ends the process before the call of that number, or in the middle of it where it is a write.
class KillingFileCalls : public FailingFileCalls
{
public:
    KillingFileCalls(qsizetype last, bool inTheMiddle)
        : m_last(last)
        , m_inTheMiddle(inTheMiddle)
    {
        beforeStep = [this](qsizetype step) {
            if (step == m_last && !(m_inTheMiddle && steps.back() == "write"))
                ::raise(SIGKILL);
        };
    }
    ssize_t write(int file, const void *bytes, std::size_t size) override
    {
        const bool last = steps.size() == m_last;
        const ssize_t taken = FailingFileCalls::write(file, bytes, last ? size / 2 : size);
        if (last)
            ::raise(SIGKILL);
        return taken;
    }

private:
    qsizetype m_last;
    bool m_inTheMiddle;
};

/// Whether the process was killed at that call.
bool killAt(int step, bool inTheMiddle, const Kind &kind, const Folder &folder, Scene scene)
{
    const pid_t child = ::fork();
    if (child == 0) {
        KillingFileCalls calls(step, inTheMiddle);
        (void)loadAndSave(kind, folder, calls, scene);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return child > 0 && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

} // namespace

class tst_recordFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCallMayFail_data();
    void everyCallMayFail();
    void everyMomentMayBeTheLast_data() { everyScene(); }
    void everyMomentMayBeTheLast();
    void theFolderIsReadOnly();
    void theCopiesAreReadOnly();
    void whatStandsInTheWay_data();
    void whatStandsInTheWay();
    void whatStandsInTheCopiesWay_data();
    void whatStandsInTheCopiesWay();

private:
    static void everyScene();
};

void tst_recordFaults::everyScene()
{
    QTest::addColumn<QByteArray>("kindName");
    QTest::addColumn<int>("sceneNumber");
    for (const char *kind : {"config", "tasks", "cards", "progress"}) {
        for (const auto &[name, scene] : scenes)
            QTest::addRow("%s, %s", kind, name) << QByteArray(kind) << int(scene);
    }
}

void tst_recordFaults::everyCallMayFail_data()
{
    everyScene();
}

void tst_recordFaults::everyCallMayFail()
{
    QFETCH(QByteArray, kindName);
    QFETCH(int, sceneNumber);
    const Kind kind = kindOf(kindName);
    const auto scene = Scene(sceneNumber);
    const int calls = callsOf(kind, scene);
    int points = 0;
    int failedSaves = 0;
    {
        const Quiet quiet;
        for (const int error : {ENOSPC, EIO, EACCES, EROFS}) {
            for (int step = 0; step < calls; ++step) {
                const Folder folder(kind, scene);
                const Tree before = folder.tree();
                FailingFileCalls failing;
                failing.failingStep = step;
                failing.error = error;
                const auto saved = loadAndSave(kind, folder, failing, scene);
                points += failing.steps.size() > step ? 1 : 0;
                failedSaves += saved.ok() ? 0 : 1;
                const QByteArray context = "call " + QByteArray::number(step) + ", " +
                                           failing.steps.value(step) + ": " + std::strerror(error);
                QVERIFY2(!saved.ok() || folder.tree().at(kind.file) == kind.newBytes, context.constData());
                QVERIFY2(saved.ok() || saved.reason() == description(error), context.constData());
                QString wrong = wrongIn(kind, scene, before, folder);
                if (wrong.isEmpty())
                    wrong = wrongInNextSave(kind, scene, folder);
                QVERIFY2(wrong.isEmpty(), qPrintable(wrong + u", "_s + QString::fromLatin1(context)));
            }
        }
    }
    qInfo() << points << "faults in" << calls << "calls," << failedSaves << "failed the save";
    QVERIFY(calls > 0);
    QCOMPARE(points, calls * 4);
    QVERIFY(failedSaves > 0 && failedSaves < points);
}

void tst_recordFaults::everyMomentMayBeTheLast()
{
    QFETCH(QByteArray, kindName);
    QFETCH(int, sceneNumber);
    const Kind kind = kindOf(kindName);
    const auto scene = Scene(sceneNumber);
    const int calls = callsOf(kind, scene);
    int points = 0;
    {
        const Quiet quiet;
        for (int step = 0; step < calls; ++step) {
            for (const bool inTheMiddle : {false, true}) {
                const Folder folder(kind, scene, kindName == "cards" ? Place::Disk : Place::Memory);
                const Tree before = folder.tree();
                const bool killed = killAt(step, inTheMiddle, kind, folder, scene);
                QVERIFY2(killed, QByteArray::number(step).constData());
                points += killed ? 1 : 0;
                QString wrong = wrongIn(kind, scene, before, folder);
                if (wrong.isEmpty())
                    wrong = wrongInNextSave(kind, scene, folder);
                QVERIFY2(wrong.isEmpty(), qPrintable(wrong + u", call %1"_s.arg(step)));
            }
        }
    }
    qInfo() << points << "ends in" << calls << "calls";
    QVERIFY(calls > 0);
    QCOMPARE(points, calls * 2);
}

void tst_recordFaults::theFolderIsReadOnly()
{
    const Quiet quiet;
    const Kind kind = cardsKind();
    QTemporaryDir home;
    QVERIFY(::chmod(QFile::encodeName(home.path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(home.path(), [&] {
        put(home.filePath(kind.file), kind.oldBytes);
        if (::chmod(QFile::encodeName(home.path()).constData(), 0500) < 0)
            return 1;
        FolderRecordFiles files(home.path());
        RecordStore store(files);
        if (kind.load(store) != kind.oldBytes)
            return 2;
        const auto saved = kind.saveNew(store);
        if (saved.ok() || saved.reason() != description(EACCES))
            return 3;
        return content(home.filePath(kind.file)) == kind.oldBytes ? 0 : 4;
    });
    ::chmod(QFile::encodeName(home.path()).constData(), 0700);
    QCOMPARE(outcome, 0);
    QCOMPARE(names(home.path()), QStringList{kind.file});
}

void tst_recordFaults::theCopiesAreReadOnly()
{
    const Quiet quiet;
    const Kind kind = cardsKind();
    QTemporaryDir home;
    QVERIFY(::chmod(QFile::encodeName(home.path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(home.path(), [&] {
        put(home.filePath(kind.file), kind.oldBytes);
        if (!QDir(home.path()).mkdir(u"backups"_s) ||
            ::chmod(QFile::encodeName(home.filePath(u"backups"_s)).constData(), 0500) < 0)
            return 1;
        FolderRecordFiles files(home.path());
        RecordStore store(files);
        (void)kind.load(store);
        if (!kind.saveNew(store).ok())
            return 2;
        return content(home.filePath(kind.file)) == kind.newBytes ? 0 : 3;
    });
    ::chmod(QFile::encodeName(home.filePath(u"backups"_s)).constData(), 0700);
    QCOMPARE(outcome, 0);
    QVERIFY(names(home.filePath(u"backups"_s)).isEmpty());
}

void tst_recordFaults::whatStandsInTheWay_data()
{
    QTest::addColumn<QByteArray>("kindName");
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<int>("error"); // of the save; 0: it succeeds
    for (const char *kind : {"config", "tasks", "cards", "progress"}) {
        QTest::addRow("%s, a file for the folder", kind)
            << QByteArray(kind) << "folder is a file"_ba << ENOTDIR;
        QTest::addRow("%s, a link to nowhere for the folder", kind)
            << QByteArray(kind) << "folder leads nowhere"_ba << ENOENT;
        QTest::addRow("%s, no parents", kind) << QByteArray(kind) << "nothing"_ba << 0;
        QTest::addRow("%s, a folder", kind) << QByteArray(kind) << "folder"_ba << EISDIR;
        QTest::addRow("%s, a pipe", kind) << QByteArray(kind) << "pipe"_ba << 0;
        QTest::addRow("%s, a link", kind) << QByteArray(kind) << "link"_ba << 0;
        QTest::addRow("%s, a link to nothing", kind) << QByteArray(kind) << "dangling link"_ba << 0;
        QTest::addRow("%s, a link into a folder that is not there", kind)
            << QByteArray(kind) << "link into nowhere"_ba << ENOENT;
        QTest::addRow("%s, a link to itself", kind) << QByteArray(kind) << "loop"_ba << ELOOP;
    }
}

void tst_recordFaults::whatStandsInTheWay()
{
    QFETCH(QByteArray, kindName);
    QFETCH(QByteArray, what);
    QFETCH(int, error);
    const Quiet quiet;
    const Kind kind = kindOf(kindName);
    QTemporaryDir home;
    const QString folder = home.filePath(u"share/Quorvel"_s);
    const QString path = folder + u'/' + kind.file;
    if (what.startsWith("folder ")) {
        QVERIFY(QDir(home.path()).mkdir(u"share"_s));
        if (what == "folder is a file")
            put(folder, "plain");
        else
            symbolicLink(home.filePath(u"nowhere"_s), folder);
    } else if (what != "nothing") {
        QVERIFY(QDir().mkpath(folder));
    }
    if (what == "folder")
        QVERIFY(QDir(folder).mkdir(kind.file));
    if (what == "pipe")
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    if (what == "link")
        put(home.filePath(u"real"_s), kind.oldBytes);
    if (what == "link" || what == "dangling link")
        symbolicLink(home.filePath(u"real"_s), path);
    if (what == "link into nowhere")
        symbolicLink(home.filePath(u"gone/real"_s), path);
    if (what == "loop")
        symbolicLink(kind.file, path);

    FolderRecordFiles files(folder);
    RecordStore store(files);
    QCOMPARE(kind.load(store), what == "link" ? kind.oldBytes : kind.freshBytes);
    const auto saved = kind.saveNew(store);
    QCOMPARE(saved.ok() ? QString() : saved.reason(), error ? description(error) : QString());
    if (!error) {
        RecordStore fresh(files);
        QCOMPARE(kind.load(fresh), kind.newBytes);
    }
    if (what == "link") {
        QVERIFY(QFileInfo(path).isSymLink());
        QVERIFY(hasBytes(treeOf(folder), kind.oldBytes)); // in the copy
    }
    if (what == "pipe") // it is kept aside as anything that cannot be read
        QCOMPARE(names(folder).size(), 2);
    if (what == "folder is a file")
        QCOMPARE(content(folder), QByteArray("plain"));
}

void tst_recordFaults::whatStandsInTheCopiesWay_data()
{
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<bool>("copied");
    QTest::newRow("a file") << "file"_ba << false;
    QTest::newRow("a pipe") << "pipe"_ba << false;
    QTest::newRow("a link to nothing") << "dangling link"_ba << false;
    QTest::newRow("a link to itself") << "loop"_ba << false;
    QTest::newRow("a link to a folder") << "link"_ba << true;
    QTest::newRow("a folder of that copy's name") << "name is a folder"_ba << true; // under the next name
}

void tst_recordFaults::whatStandsInTheCopiesWay()
{
    QFETCH(QByteArray, what);
    QFETCH(bool, copied);
    const Quiet quiet;
    const Kind kind = cardsKind();
    QTemporaryDir home;
    const QString backups = home.filePath(u"backups"_s);
    put(home.filePath(kind.file), kind.oldBytes);
    if (what == "file")
        put(backups, "plain");
    if (what == "pipe")
        QCOMPARE(::mkfifo(QFile::encodeName(backups).constData(), 0600), 0);
    if (what == "link")
        QVERIFY(QDir(home.path()).mkdir(u"elsewhere"_s));
    if (what == "link" || what == "dangling link")
        symbolicLink(home.filePath(u"elsewhere"_s), backups);
    if (what == "loop")
        symbolicLink(backups, backups);
    if (what == "name is a folder")
        QVERIFY(QDir(home.path()).mkpath(u"backups/"_s + rollingCopyName(kind.file, now)));

    FolderRecordFiles files(home.path());
    RecordStore store(files);
    QCOMPARE(kind.load(store), kind.oldBytes);
    QVERIFY(kind.saveNew(store).ok());
    QCOMPARE(content(home.filePath(kind.file)), kind.newBytes);
    QCOMPARE(hasBytes(treeOf(home.path()), kind.oldBytes), copied);
    if (what == "file")
        QCOMPARE(content(backups), QByteArray("plain"));
}

QTEST_APPLESS_MAIN(tst_recordFaults)
#include "tst_recordFaults.moc"
