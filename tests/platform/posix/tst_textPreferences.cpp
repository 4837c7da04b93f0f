#include "FailingFileCalls.h"
#include "TextPreferences.h"
#include "suite.h"
#include "testFiles.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace TestFiles;

namespace {

const QString seconds = u"studySeconds-2026-11-20"_s;

/// No log lines while it lives.
class Silence
{
public:
    Silence() { set(+1); }
    ~Silence() { set(-1); }
    Q_DISABLE_COPY_MOVE(Silence)

private:
    static void set(int change)
    {
        static int depth = 0;
        depth += change;
        QLoggingCategory::setFilterRules(depth > 0 ? u"quorvel.*=false"_s : QString());
    }
};

} // namespace

class tst_textPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    // What is written
    void startingWritesNothing();
    void writesReadableTextPrivately();
    void anEqualValueWritesNothing();
    void refusesOtherKeys();
    void keepsCommentsInPlace();
    void writesThroughALink();
    void surviveAnyString();

    // At once and soon
    void atOnceIsOnTheDisk();
    void soonMakesNoSyncAndNoLock();
    void soonOutlivesTheProcess();
    void anEqualValueAtOnceSyncsWhatWasSoon();
    void theTimerTakesUpTheJournal();
    void theTimerTakesUpAnOldJournal();
    void theEndTakesUpTheJournal();
    void isReadyWithinAMinute();
    void twentyYearsOfDaysStayCheap();

    // An old journal
    void aJournalOfAnotherFileDoesNotCount_data();
    void aJournalOfAnotherFileDoesNotCount();
    void aJournalThatStayedDoesNotCount();

    // What cannot be understood
    void keepsAsideBeforeReplacing_data();
    void keepsAsideBeforeReplacing();
    void keepsAsideOnlyOnce();
    void saysThatACounterIsInMemoryOnly();
    void doesNotReplaceWhatItCannotKeep();
    void replacesAFileThatCannotBeRead();
    void aFolderInItsPlaceStays();
    void journalsBesideAFileThatCannotBeRead();

    // Failures
    void aFailedStepLosesNothing_data();
    void aFailedStepLosesNothing();
    void triesAgainWithTheNextWrite();
    void aFailedRemovalIsJournaled();
    void aFailedJournalIsTriedAgain();
    void aFolderSyncThatFailsKeepsTheJournalRight();
    void aFileChangedMeanwhileKeepsTheJournalRight();
    void logsAFailureOnce();

private:
    QString folder() const { return m_home->filePath(u"config/quorvel"_s); }
    QString path() const { return folder() + u"/preferences"_s; }
    QString journal() const { return path() + u".journal"_s; }
    void putFile(const QByteArray &bytes) const
    {
        QDir().mkpath(folder());
        put(path(), bytes);
    }
    /// What a program that starts now finds, without changing a file: the object is not let go of.
    std::optional<PreferenceValue> found(const QString &key) const;
    /// The name of the one file that was kept aside.
    QString asideName() const;

    std::unique_ptr<QTemporaryDir> m_home;
};

std::optional<PreferenceValue> tst_textPreferences::found(const QString &key) const
{
    const Silence silence;
    // Its end must not write: the calls that would are refused.
    FailingFileCalls calls;
    for (const char *call : {"write", "rename", "unlink", "mkdir", "ftruncate", "link"})
        calls.failures[call] = EROFS;
    const TextPreferences preferences(folder(), calls);
    return preferences.value(key);
}

QString tst_textPreferences::asideName() const
{
    const QStringList kept = names(folder()).filter(u"preferences.unreadable-"_s);
    return kept.size() == 1 ? kept.front() : u"<%1 files>"_s.arg(kept.size());
}

void tst_textPreferences::startingWritesNothing()
{
    {
        const TextPreferences preferences(folder());
        QVERIFY(!preferences.value(u"language"_s));
        QVERIFY(preferences.availability().works);
    }
    QVERIFY(names(m_home->path()).isEmpty());
}

void tst_textPreferences::writesReadableTextPrivately()
{
    TextPreferences preferences(folder());
    preferences.setValue(u"language"_s, u"ru"_s, Durability::AtOnce);
    preferences.setValue(seconds, qint64(1500), Durability::AtOnce);
    preferences.setValue(u"proModeEnabled"_s, true, Durability::AtOnce);
    QCOMPARE(content(path()),
             QByteArray("language = \"ru\"\nstudySeconds-2026-11-20 = 1500\nproModeEnabled = true\n"));
    QCOMPARE(mode(folder()), 0700);
    QCOMPARE(mode(path()), 0600);
    preferences.setValue(seconds, qint64(1501), Durability::Soon);
    QCOMPARE(mode(journal()), 0600);
}

void tst_textPreferences::anEqualValueWritesNothing()
{
    putFile("language = \"ru\"\n");
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    calls.steps.clear();
    preferences.setValue(u"language"_s, u"ru"_s, Durability::AtOnce);
    preferences.setValue(u"language"_s, u"ru"_s, Durability::Soon);
    preferences.remove(u"absent"_s);
    QCOMPARE(calls.steps, QList<QByteArray>());
}

void tst_textPreferences::refusesOtherKeys()
{
    TextPreferences preferences(folder());
    QTest::ignoreMessage(QtWarningMsg, "refused a preference key: \"two words\"");
    preferences.setValue(u"two words"_s, qint64(1), Durability::AtOnce);
    QTest::ignoreMessage(QtWarningMsg, "refused a preference key: \"\"");
    preferences.remove(QString());
    QVERIFY(!preferences.value(u"two words"_s));
    QVERIFY(names(m_home->path()).isEmpty());
}

void tst_textPreferences::keepsCommentsInPlace()
{
    putFile("# mine\n\nlanguage = \"en\" \r\n# seconds\nstudySeconds-2026-11-20=5");
    TextPreferences preferences(folder());
    preferences.setValue(seconds, qint64(6), Durability::AtOnce);
    preferences.remove(u"language"_s);
    QCOMPARE(content(path()), QByteArray("# mine\n\n# seconds\nstudySeconds-2026-11-20 = 6\n"));
    QCOMPARE(names(folder()), QStringList{u"preferences"_s});
}

void tst_textPreferences::writesThroughALink()
{
    QVERIFY(QDir().mkpath(folder()));
    put(m_home->filePath(u"dotfile"_s), "language = \"en\"\n");
    symbolicLink(m_home->filePath(u"dotfile"_s), path());
    TextPreferences preferences(folder());
    QVERIFY(preferences.value(u"language"_s) == PreferenceValue(u"en"_s));
    preferences.setValue(u"language"_s, u"ru"_s, Durability::AtOnce);
    QVERIFY(QFileInfo(path()).isSymLink());
    QCOMPARE(content(m_home->filePath(u"dotfile"_s)), QByteArray("language = \"ru\"\n"));
}

void tst_textPreferences::surviveAnyString()
{
    const QString text = u"\"\\\n\r= # "_s + QChar(0) + QChar(0xd83d) + u"x😀"_s + QChar(0xde00);
    for (const Durability durability : {Durability::AtOnce, Durability::Soon}) {
        const QString key = durability == Durability::Soon ? u"soon"_s : u"once"_s;
        TextPreferences preferences(folder());
        preferences.setValue(key, text, durability);
        QVERIFY(found(key) == PreferenceValue(text));
    }
}

void tst_textPreferences::atOnceIsOnTheDisk()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(1), Durability::Soon);
    calls.steps.clear();
    preferences.setValue(u"language"_s, u"ru"_s, Durability::AtOnce);
    // The two parents that got a folder, the file and its folder; then the journal goes.
    QCOMPARE(calls.steps.count("fsync"), 4);
    QCOMPARE(calls.steps.count("rename"), 1);
    QVERIFY(calls.steps.lastIndexOf("fsync") < calls.steps.lastIndexOf("unlink"));
    QCOMPARE(names(folder()), QStringList{u"preferences"_s});
    QVERIFY(content(path()).contains("studySeconds-2026-11-20 = 1\n"));

    calls.steps.clear();
    preferences.remove(u"language"_s);
    QCOMPARE(calls.steps.count("fsync"), 2);
    QCOMPARE(content(path()), QByteArray("studySeconds-2026-11-20 = 1\n"));
}

void tst_textPreferences::soonMakesNoSyncAndNoLock()
{
    FailingFileCalls calls; // has no call that takes a lock
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(0), Durability::Soon);
    QCOMPARE(calls.steps.count("fsync"), 0);
    for (int i = 1; i <= 50; ++i) {
        calls.steps.clear();
        preferences.setValue(seconds, qint64(i), Durability::Soon);
        QCOMPARE(calls.steps, QList<QByteArray>{"write"});
    }
}

void tst_textPreferences::soonOutlivesTheProcess()
{
    TextPreferences preferences(folder());
    for (int i = 0; i < 5; ++i) {
        preferences.setValue(seconds, qint64(i), Durability::Soon);
        QVERIFY(found(seconds) == PreferenceValue(qint64(i)));
    }
    QVERIFY(!QFile::exists(path()));
    preferences.setValue(u"language"_s, u"ru"_s, Durability::AtOnce);
    preferences.setValue(seconds, qint64(9), Durability::Soon);
    QVERIFY(found(seconds) == PreferenceValue(qint64(9)));
    QVERIFY(found(u"language"_s) == PreferenceValue(u"ru"_s));
}

void tst_textPreferences::anEqualValueAtOnceSyncsWhatWasSoon()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(7), Durability::Soon);
    preferences.setValue(seconds, qint64(7), Durability::AtOnce);
    QCOMPARE(content(path()), QByteArray("studySeconds-2026-11-20 = 7\n"));
    calls.steps.clear();
    preferences.setValue(seconds, qint64(7), Durability::AtOnce);
    QCOMPARE(calls.steps, QList<QByteArray>());
}

void tst_textPreferences::theTimerTakesUpTheJournal()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls, 100ms);
    QDeadlineTimer deadline(2000);
    qint64 count = 0;
    while (!QFile::exists(path()) && !deadline.hasExpired()) { // writes that go on do not put it off
        preferences.setValue(seconds, ++count, Durability::Soon);
        QTest::qWait(10);
    }
    QVERIFY(count > 1);
    QCOMPARE(content(path()), "studySeconds-2026-11-20 = " + QByteArray::number(count) + '\n');
    QVERIFY(!QFile::exists(journal()));
    calls.steps.clear();
    QTest::qWait(250); // and once only
    QCOMPARE(calls.steps, QList<QByteArray>());
    preferences.setValue(seconds, qint64(0), Durability::Soon); // then again
    QTRY_COMPARE_WITH_TIMEOUT(content(path()), QByteArray("studySeconds-2026-11-20 = 0\n"), 2000);
}

void tst_textPreferences::theTimerTakesUpAnOldJournal()
{
    QVERIFY(QDir().mkpath(folder()));
    put(journal(), "journal-of = \"none\"\na = 1\n");
    const TextPreferences preferences(folder(), FileCalls::system(), 1ms);
    QVERIFY(preferences.value(u"a"_s) == PreferenceValue(qint64(1)));
    QTRY_COMPARE_WITH_TIMEOUT(names(folder()), QStringList{u"preferences"_s}, 2000);
    QCOMPARE(content(path()), QByteArray("a = 1\n"));
}

void tst_textPreferences::theEndTakesUpTheJournal()
{
    {
        TextPreferences preferences(folder());
        preferences.setValue(seconds, qint64(2), Durability::Soon);
    }
    QCOMPARE(content(path()), QByteArray("studySeconds-2026-11-20 = 2\n"));
    QCOMPARE(names(folder()), QStringList{u"preferences"_s});
}

void tst_textPreferences::isReadyWithinAMinute()
{
    // A coarse timer of Qt may be 5 % late.
    QVERIFY(TextPreferences::foldDelay * 21 / 20 <= 55s);
}

void tst_textPreferences::twentyYearsOfDaysStayCheap()
{
    QByteArray bytes;
    const QDate first(2026, 11, 20);
    for (int day = 0; day < 7500; ++day) {
        const QByteArray key = first.addDays(day).toString(Qt::ISODate).toLatin1();
        bytes += "studySeconds-" + key + " = 5400\ncompletedSessions-" + key + " = 4\n";
    }
    putFile(bytes);
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    const QString last = u"studySeconds-"_s + first.addDays(7499).toString(Qt::ISODate);
    QVERIFY(preferences.value(last) == PreferenceValue(qint64(5400)));
    preferences.setValue(last, qint64(5401), Durability::Soon);
    calls.written = 0;
    preferences.setValue(last, qint64(5402), Durability::Soon);
    QVERIFY(calls.written < 50); // a second of study costs a line, not the file
    calls.written = 0;
    preferences.setValue(last, qint64(5403), Durability::AtOnce);
    QCOMPARE(calls.written, bytes.size()); // a minute of study costs the file, once
    bytes.replace(last.toLatin1() + " = 5400", last.toLatin1() + " = 5403");
    QCOMPARE(content(path()), bytes);
}

void tst_textPreferences::aJournalOfAnotherFileDoesNotCount_data()
{
    QTest::addColumn<QByteArray>("edited");
    QTest::newRow("edited by hand") << QByteArray("studySeconds-2026-11-20 = 500\nlanguage = \"en\"\n");
    QTest::newRow("edited elsewhere") << QByteArray("# note\nstudySeconds-2026-11-20 = 500\n");
}

void tst_textPreferences::aJournalOfAnotherFileDoesNotCount()
{
    QFETCH(QByteArray, edited);
    QByteArray left;
    {
        TextPreferences preferences(folder());
        preferences.setValue(seconds, qint64(1), Durability::AtOnce);
        preferences.setValue(seconds, qint64(2), Durability::Soon);
        left = content(journal());
    }
    put(journal(), left); // as after a kill
    put(path(), edited);
    QVERIFY(found(seconds) == PreferenceValue(qint64(500)));

    TextPreferences preferences(folder()); // and its lines never come back
    preferences.setValue(u"other"_s, true, Durability::Soon);
    QVERIFY(found(seconds) == PreferenceValue(qint64(500)));
    QVERIFY(found(u"other"_s) == PreferenceValue(true));
}

void tst_textPreferences::aJournalThatStayedDoesNotCount()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(2), Durability::Soon);
    calls.failures["unlink"] = EACCES; // as if the program ended between the save and the removal
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"old journal.*cannot be removed"_s));
    preferences.setValue(seconds, qint64(3), Durability::AtOnce);
    QVERIFY(content(journal()).contains("= 2\n"));
    QVERIFY(found(seconds) == PreferenceValue(qint64(3)));
    preferences.setValue(u"other"_s, true, Durability::Soon);
    QVERIFY(found(seconds) == PreferenceValue(qint64(3)));
    QVERIFY(found(u"other"_s) == PreferenceValue(true));
}

void tst_textPreferences::keepsAsideBeforeReplacing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("saved");
    QTest::newRow("one line") << QByteArray("# mine\na = 1\nlanguage = ru\nb = 2\n")
                              << QByteArray("# mine\na = 1\nb = 2\nnew = true\n");
    QTest::newRow("fraction") << QByteArray("a = 1.5\n") << QByteArray("new = true\n");
    QTest::newRow("garbage") << QByteArray("\x7f\x45LF\0\0\xff\xfe", 8) << QByteArray("new = true\n");
    QTest::newRow("zeros") << QByteArray(5000, '\0') << QByteArray("new = true\n");
}

void tst_textPreferences::keepsAsideBeforeReplacing()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, saved);
    putFile(bytes);
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(u"lines of the preferences that make no sense: 1"_s));
    TextPreferences preferences(folder());
    QCOMPARE(preferences.value(u"a"_s).has_value(), saved.contains("a = 1"));
    preferences.setValue(u"soon"_s, true, Durability::Soon); // is no save
    QCOMPARE(names(folder()), (QStringList{u"preferences"_s, u"preferences.journal"_s}));
    QCOMPARE(content(path()), bytes);

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"kept as .*preferences\\.unreadable-"_s));
    preferences.setValue(u"new"_s, true, Durability::AtOnce);
    QByteArray expected = saved;
    QCOMPARE(content(path()), expected.replace("new = true\n", "soon = true\nnew = true\n"));
    const QRegularExpression pattern(u"^preferences\\.unreadable-20\\d{6}T\\d{6}Z$"_s);
    QVERIFY2(pattern.match(asideName()).hasMatch(), qPrintable(asideName()));
    QCOMPARE(content(folder() + u'/' + asideName()), bytes);
}

void tst_textPreferences::keepsAsideOnlyOnce()
{
    putFile("what?\n");
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"make no sense"_s));
        TextPreferences preferences(folder());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"kept as"_s));
        preferences.setValue(u"a"_s, true, Durability::AtOnce);
        preferences.setValue(u"a"_s, false, Durability::AtOnce);
    }
    TextPreferences preferences(folder());
    preferences.setValue(u"a"_s, true, Durability::AtOnce);
    QCOMPARE(names(folder()).size(), 2);
    QCOMPARE(content(folder() + u'/' + asideName()), QByteArray("what?\n"));
}

void tst_textPreferences::saysThatACounterIsInMemoryOnly()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(u"a"_s, qint64(1), Durability::Soon);
    QVERIFY(preferences.availability().works);
    calls.failures["write"] = ENOSPC;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"the journal .* cannot be written: \"No space"_s));
    preferences.setValue(u"a"_s, qint64(2), Durability::Soon);
    QCOMPARE(preferences.availability().reasonEnglish,
             u"Preferences cannot be saved: No space left on device."_s);
    QVERIFY(!preferences.availability().reasonRussian.isEmpty());
    calls.failures.clear();
    preferences.setValue(u"b"_s, qint64(3), Durability::AtOnce); // writes all of them
    QVERIFY(preferences.availability().works);
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(2)));
}

void tst_textPreferences::doesNotReplaceWhatItCannotKeep()
{
    putFile("what?\na = 1\n");
    FailingFileCalls calls;
    calls.failures["link"] = ENOSPC;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"make no sense"_s));
    TextPreferences preferences(folder(), calls);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be kept and stay: \"No space left"_s));
    preferences.setValue(u"a"_s, qint64(2), Durability::AtOnce);
    QCOMPARE(content(path()), QByteArray("what?\na = 1\n"));
    QVERIFY(preferences.value(u"a"_s) == PreferenceValue(qint64(2)));
    QVERIFY(!preferences.availability().works);
    QCOMPARE(preferences.availability().reasonEnglish,
             u"Preferences cannot be saved: No space left on device."_s);
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(2))); // from the journal

    calls.failures.clear();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"kept as"_s));
    preferences.setValue(u"b"_s, qint64(3), Durability::AtOnce);
    QCOMPARE(content(path()), QByteArray("a = 2\nb = 3\n"));
    QCOMPARE(content(folder() + u'/' + asideName()), QByteArray("what?\na = 1\n"));
    QVERIFY(preferences.availability().works);
}

void tst_textPreferences::replacesAFileThatCannotBeRead()
{
    QVERIFY(::chmod(QFile::encodeName(m_home->path()).constData(), 0755) == 0);
    const int outcome = asOrdinaryUser(m_home->path(), [this] {
        putFile("a = 1\n");
        if (::chmod(QFile::encodeName(path()).constData(), 0) < 0)
            return 1;
        TextPreferences preferences(folder());
        if (preferences.value(u"a"_s))
            return 2;
        preferences.setValue(u"b"_s, qint64(2), Durability::AtOnce);
        if (content(path()) != "b = 2\n")
            return 3;
        const QString aside = folder() + u'/' + asideName();
        if (::chmod(QFile::encodeName(aside).constData(), 0600) < 0)
            return 4;
        return content(aside) == "a = 1\n" ? 0 : 5;
    });
    QCOMPARE(outcome, 0);
}

void tst_textPreferences::aFolderInItsPlaceStays()
{
    QVERIFY(QDir().mkpath(path()));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read: \"Is a directory\""_s));
    TextPreferences preferences(folder());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be kept and stay: \"Is a directory\""_s));
    preferences.setValue(u"a"_s, true, Durability::AtOnce);
    QVERIFY(QFileInfo(path()).isDir());
    QVERIFY(preferences.value(u"a"_s) == PreferenceValue(true));
    QCOMPARE(names(folder()), (QStringList{u"preferences"_s, u"preferences.journal"_s}));
}

void tst_textPreferences::journalsBesideAFileThatCannotBeRead()
{
    putFile("a = 1\n");
    FailingFileCalls calls;
    calls.failures["read"] = EIO;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read: \"Input/output error\""_s));
    TextPreferences preferences(folder(), calls);
    QVERIFY(!preferences.value(u"a"_s));
    preferences.setValue(u"b"_s, qint64(2), Durability::Soon);
    QCOMPARE(content(journal()), QByteArray("journal-of = \"unreadable\"\nb = 2\n"));
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(1))); // readable again, it is what counts
    QVERIFY(!found(u"b"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"kept as"_s));
    preferences.remove(u"b"_s);
    QCOMPARE(content(folder() + u'/' + asideName()), QByteArray("a = 1\n"));
}

void tst_textPreferences::aFailedStepLosesNothing_data()
{
    QTest::addColumn<int>("error");
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("no file") << ENOSPC << QByteArray();
    QTest::newRow("a file") << EIO << QByteArray("a = 1\n");
    QTest::newRow("a file with garbage") << EACCES << QByteArray("a = 1\n?\n");
}

void tst_textPreferences::aFailedStepLosesNothing()
{
    QFETCH(int, error);
    QFETCH(QByteArray, before);
    const Silence silence;
    qsizetype stepsInAll = 0;
    for (int step = 0;; ++step) {
        init();
        if (!before.isEmpty())
            putFile(before);
        FailingFileCalls calls;
        calls.longestWrite = 9;
        auto *preferences = new TextPreferences(folder(), calls);
        const qsizetype start = calls.steps.size();
        calls.failingStep = start + step;
        calls.error = error;
        preferences->setValue(u"b"_s, qint64(1), Durability::Soon);
        preferences->setValue(u"c"_s, qint64(2), Durability::AtOnce);
        preferences->setValue(u"b"_s, qint64(3), Durability::Soon);
        stepsInAll = calls.steps.size() - start;
        const QByteArray context =
            QByteArray::number(step) + ' ' + calls.steps.value(calls.failingStep, "nothing");

        // One step failed; whatever it was, after the next write a killed program would have lost nothing.
        calls.failingStep = -1;
        preferences->setValue(u"d"_s, qint64(4), Durability::Soon);
        QVERIFY2(found(u"d"_s) == PreferenceValue(qint64(4)), context.constData());
        QVERIFY2(found(u"b"_s) == PreferenceValue(qint64(3)), context.constData());
        QVERIFY2(found(u"c"_s) == PreferenceValue(qint64(2)), context.constData());
        if (!before.isEmpty())
            QVERIFY2(found(u"a"_s) == PreferenceValue(qint64(1)), context.constData());
        QVERIFY2(!names(folder()).contains(u".preferences.new"_s), context.constData());
        delete preferences; // its end saves what the failed step kept back
        const QByteArray after = (before.isEmpty() ? "" : "a = 1\n") + QByteArray("b = 3\nc = 2\nd = 4\n");
        QVERIFY2(content(path()) == after, context + ": " + content(path()));
        if (before.contains('?'))
            QCOMPARE(content(folder() + u'/' + asideName()), before);
        if (stepsInAll <= step)
            break;
    }
    QVERIFY2(stepsInAll >= 20, QByteArray::number(stepsInAll).constData());
}

void tst_textPreferences::triesAgainWithTheNextWrite()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls, 30ms);
    calls.failures["rename"] = EROFS;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved: \"Read-only file system\""_s));
    preferences.setValue(u"a"_s, qint64(1), Durability::AtOnce);
    QVERIFY(!QFile::exists(path()));
    QVERIFY(!preferences.availability().works);
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(1)));
    QTest::qWait(100); // the timer tries too
    QVERIFY(!QFile::exists(path()));
    calls.failures.clear();
    QTRY_COMPARE_WITH_TIMEOUT(content(path()), QByteArray("a = 1\n"), 2000);
    QVERIFY(preferences.availability().works);

    calls.failures["rename"] = EROFS;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved"_s));
    preferences.setValue(u"a"_s, qint64(2), Durability::AtOnce);
    calls.failures.clear();
    preferences.setValue(u"b"_s, qint64(3), Durability::AtOnce);
    QCOMPARE(content(path()), QByteArray("a = 2\nb = 3\n"));
}

void tst_textPreferences::aFailedRemovalIsJournaled()
{
    putFile("serverSessionToken = \"secret\"\na = 1\n");
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    calls.failures["rename"] = ENOSPC;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved"_s));
    preferences.remove(u"serverSessionToken"_s);
    QVERIFY(!preferences.value(u"serverSessionToken"_s));
    QVERIFY(!found(u"serverSessionToken"_s)); // signed out stays signed out
    calls.failures.clear();
    preferences.remove(u"serverSessionToken"_s); // as the value is gone, only the failed save is left to do
    QCOMPARE(content(path()), QByteArray("a = 1\n"));
}

void tst_textPreferences::aFailedJournalIsTriedAgain()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(1), Durability::Soon);
    calls.failures["write"] = ENOSPC;
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(u"journal .*cannot be written: \"No space left on device\""_s));
    preferences.setValue(seconds, qint64(2), Durability::Soon);
    preferences.setValue(u"other"_s, qint64(5), Durability::Soon);
    QVERIFY(preferences.value(seconds) == PreferenceValue(qint64(2)));
    QVERIFY(found(seconds) == PreferenceValue(qint64(1)));
    calls.failures.clear();
    preferences.setValue(u"third"_s, qint64(6), Durability::Soon);
    QVERIFY(found(seconds) == PreferenceValue(qint64(2)));
    QVERIFY(found(u"other"_s) == PreferenceValue(qint64(5)));
    QVERIFY(found(u"third"_s) == PreferenceValue(qint64(6)));
}

void tst_textPreferences::aFolderSyncThatFailsKeepsTheJournalRight()
{
    putFile("a = 1\n");
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(1), Durability::Soon);
    const QList<QByteArray> save = {"mkdir", "readlink", "unlink", "open", "write",
                                    "fsync", "close",    "rename", "open", "fsync"};
    calls.failingStep = calls.steps.size() + save.size() - 1;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved: \"Input/output error\""_s));
    preferences.setValue(u"a"_s, qint64(2), Durability::AtOnce);
    QVERIFY(calls.steps.mid(calls.failingStep - save.size() + 1, save.size()) == save);
    QVERIFY(content(path()).contains("a = 2\n")); // the new file is there all the same
    preferences.setValue(seconds, qint64(3), Durability::Soon);
    QVERIFY(found(seconds) == PreferenceValue(qint64(3)));
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(2)));
}

void tst_textPreferences::aFileChangedMeanwhileKeepsTheJournalRight()
{
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    preferences.setValue(seconds, qint64(1), Durability::Soon);
    put(path(), "language = \"ru\"\n"); // against the rule, by hand
    calls.failures["rename"] = ENOSPC;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved"_s));
    preferences.setValue(u"a"_s, qint64(2), Durability::AtOnce);
    QVERIFY(found(seconds) == PreferenceValue(qint64(1)));
    QVERIFY(found(u"a"_s) == PreferenceValue(qint64(2)));
}

void tst_textPreferences::logsAFailureOnce()
{
    static QStringList messages;
    messages.clear();
    FailingFileCalls calls;
    TextPreferences preferences(folder(), calls);
    const auto previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &message) { messages += message; });
    calls.failures["write"] = ENOSPC;
    for (int i = 0; i < 5; ++i) {
        preferences.setValue(u"serverSessionToken"_s, u"secret%1"_s.arg(i), Durability::AtOnce);
        preferences.setValue(seconds, qint64(i), Durability::Soon);
    }
    QCOMPARE(messages.size(), 2); // the save, the journal
    calls.failures["write"] = EIO;
    preferences.setValue(u"a"_s, true, Durability::AtOnce);
    QCOMPARE(messages.size(), 4); // another reason
    calls.failures.clear();
    preferences.setValue(u"a"_s, false, Durability::AtOnce);
    calls.failures["write"] = EIO;
    preferences.setValue(u"a"_s, true, Durability::AtOnce);
    QVERIFY(messages.size() >= 5); // it worked in between
    qInstallMessageHandler(previous);
    QVERIFY(messages.filter(u"secret"_s).isEmpty());
    calls.failures.clear();
}

QUORVEL_TEST(tst_textPreferences, QCoreApplication)
#include "tst_textPreferences.moc"
