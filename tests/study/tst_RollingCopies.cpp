#include "FakeRecordFiles.h"
#include "RecordStore.h"
#include "RollingCopies.h"
#include "jsonCodecs.h"
#include "recordFileNames.h"
#include "suite.h"

#include <QRegularExpression>

#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString name = RecordFileNames::studyCards;
const QDateTime start(QDate(2026, 11, 21), QTime(10, 15, 0), Qt::UTC);
const QString firstCopy = u"backups/study-cards-20261121T101500Z.json"_s;

std::deque<StudyCard> cardsOf(int count)
{
    StudyCard card;
    card.createdAt = start;
    return {std::size_t(count), card};
}

QByteArray bytesOf(int count)
{
    return encodeStudyCards(cardsOf(count));
}

/// A data folder with one card in it, and the program that saves.
struct Program
{
    FakeRecordFiles files;
    RecordStore store{files};

    Program() { files.files[name] = bytesOf(1); }

    bool save(int count, const QDateTime &now) { return store.saveStudyCards(cardsOf(count), now).ok(); }
    QStringList copies() const
    {
        QStringList found;
        for (const auto &[file, bytes] : files.files) {
            if (file.contains(u'/'))
                found.append(file);
        }
        return found;
    }
};

void expectWarning(const QString &words)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(words));
}

bool takesAll(const QByteArray &)
{
    return true;
}

} // namespace

class tst_RollingCopies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }

    void keepsWhatIsReplaced();
    void keepsNothingWhereNothingIs();
    void keepsOneAnHour();
    void keepsNothingTwice();
    void theFutureDoesNotCount();
    void theSameSecondAgainNeedsNoSecondCopy();
    void oldCopiesGoAfterTheNewOneWasRead();
    void oldCopiesStayWhereTheNewOneIsNotWhole_data();
    void oldCopiesStayWhereTheNewOneIsNotWhole();
    void strangersFilesStay();
    void unreadableBytesAreKeptAsideAndRemoveNothing();
    void aFailureStopsNoSaveAndIsTriedAgainLater_data();
    void aFailureStopsNoSaveAndIsTriedAgainLater();
    void anOldCopyThatStaysIsNoFailure();
    void whatIsTooLargeIsNotCopied();
    void theFolderIsListedOnceAnHour();
    void aRestoredCopyIsLoaded();
};

void tst_RollingCopies::keepsWhatIsReplaced()
{
    Program program;
    QVERIFY(program.save(2, start));
    QCOMPARE(program.copies(), QStringList{firstCopy});
    QCOMPARE(program.files.files[firstCopy], bytesOf(1));
    QCOMPARE(program.files.files[name], bytesOf(2));
    QCOMPARE(program.files.steps,
             (std::vector<QString>{u"aside study-cards.json "_s + firstCopy, u"write study-cards.json"_s}));
}

void tst_RollingCopies::keepsNothingWhereNothingIs()
{
    Program program;
    program.files.files.clear();
    QVERIFY(program.save(1, start));
    QVERIFY(program.copies().isEmpty());
    QVERIFY(program.save(2, start)); // now there is something
    QCOMPARE(program.copies().size(), 1);
}

void tst_RollingCopies::keepsOneAnHour()
{
    Program program;
    QVERIFY(program.save(2, start));
    QVERIFY(program.save(3, start));
    QVERIFY(program.save(4, start.addSecs(3599)));
    QCOMPARE(program.copies(), QStringList{firstCopy});
    QVERIFY(program.save(5, start.addSecs(3600)));
    const QString second = u"backups/study-cards-20261121T111500Z.json"_s;
    QCOMPARE(program.copies(), (QStringList{firstCopy, second}));
    QCOMPARE(program.files.files[second], bytesOf(4));

    RecordStore next(program.files); // another start knows of it too
    QVERIFY(next.saveStudyCards(cardsOf(6), start.addSecs(3600 + 3599)).ok());
    QCOMPARE(program.copies().size(), 2);
    // Another record has its own hour.
    QVERIFY(next.saveUserProgress({}, start.addSecs(3601)).ok());
    QVERIFY(next.saveUserProgress({}, start.addSecs(3602)).ok());
    QVERIFY(program.copies().contains(u"backups/progress-20261121T111502Z.json"_s));
}

void tst_RollingCopies::keepsNothingTwice()
{
    Program program;
    QVERIFY(program.save(1, start));
    QVERIFY(program.save(1, start.addSecs(7200)));
    QVERIFY(program.save(2, start.addSecs(7300)));
    QCOMPARE(program.copies(), QStringList{firstCopy});
    // What changed is kept at once: the newest copy is old enough.
    QVERIFY(program.save(3, start.addSecs(7301)));
    QCOMPARE(program.copies(), (QStringList{firstCopy, u"backups/study-cards-20261121T121641Z.json"_s}));
    // The same length is not the same.
    auto cards = cardsOf(3);
    cards.front().correctCount = 7;
    QVERIFY(program.store.saveStudyCards(cards, start.addSecs(20'000)).ok());
    QCOMPARE(program.copies().size(), 3);
    cards.front().correctCount = 8;
    QVERIFY(program.store.saveStudyCards(cards, start.addSecs(30'000)).ok());
    QCOMPARE(program.copies().size(), 4);
}

void tst_RollingCopies::theFutureDoesNotCount()
{
    Program program;
    program.files.files[u"backups/study-cards-20300101T000000Z.json"_s] = bytesOf(9);
    QVERIFY(program.save(2, start));
    QVERIFY(program.copies().contains(firstCopy));
    QVERIFY(program.save(3, start.addSecs(60)));
    QCOMPARE(program.copies().size(), 2);
    // The clock is set back: what was made since is of the future now.
    QVERIFY(program.save(4, start.addDays(-1)));
    QCOMPARE(program.copies().size(), 3);
}

void tst_RollingCopies::theSameSecondAgainNeedsNoSecondCopy()
{
    Program program;
    QVERIFY(program.save(2, start));
    QVERIFY(program.save(3, start.addMSecs(999)));
    QVERIFY(program.save(4, start.addDays(-1))); // the clock is set back and comes to that second once more
    QVERIFY(program.save(5, start));
    QCOMPARE(program.copies(), (QStringList{u"backups/study-cards-20261120T101500Z.json"_s, firstCopy}));
    QCOMPARE(program.files.files[firstCopy], bytesOf(1));
}

void tst_RollingCopies::oldCopiesGoAfterTheNewOneWasRead()
{
    Program program;
    program.files.files[u"backups/study-cards-20261110T080000Z.json"_s] = bytesOf(7);
    program.files.files[u"backups/study-cards-20261110T090000Z.json"_s] = bytesOf(8);
    QVERIFY(program.save(2, start));
    QCOMPARE(program.files.steps, (std::vector<QString>{u"aside study-cards.json "_s + firstCopy,
                                                        u"remove backups/study-cards-20261110T080000Z.json"_s,
                                                        u"write study-cards.json"_s}));
    // Those that stayed are still known: within the hour none is made.
    QVERIFY(program.save(3, start.addSecs(60)));
    QCOMPARE(program.copies(), (QStringList{u"backups/study-cards-20261110T090000Z.json"_s, firstCopy}));
}

void tst_RollingCopies::oldCopiesStayWhereTheNewOneIsNotWhole_data()
{
    QTest::addColumn<bool>("readable");
    QTest::newRow("not readable") << false;
    QTest::newRow("other bytes") << true;
}

void tst_RollingCopies::oldCopiesStayWhereTheNewOneIsNotWhole()
{
    QFETCH(bool, readable);
    class BadDisk : public FakeRecordFiles
    {
    public:
        bool readable = false;
        Result<> keepAside(const QString &file, const QString &asideName) override
        {
            const auto kept = FakeRecordFiles::keepAside(file, asideName);
            if (readable)
                files[asideName].chop(1);
            else
                unreadable.insert(asideName);
            return kept;
        }
    } files;
    files.readable = readable;
    files.files[name] = bytesOf(1);
    files.files[u"backups/study-cards-20261110T080000Z.json"_s] = bytesOf(7);
    files.files[u"backups/study-cards-20261110T090000Z.json"_s] = bytesOf(8);
    RecordStore store(files);
    expectWarning(u"the backup study-cards-20261121T101500Z.json cannot be read back; older ones stay"_s);
    QVERIFY(store.saveStudyCards(cardsOf(2), start).ok());
    QCOMPARE(files.files.size(), std::size_t(4));
    QCOMPARE(files.files[name], bytesOf(2));
}

void tst_RollingCopies::strangersFilesStay()
{
    Program program;
    program.files.files[u"backups/study-cards-20261110T080000Z.json.mine"_s] = "mine";
    program.files.files[u"backups/notes-19990101T000000Z.json"_s] = "mine";
    program.files.files[u"backups/study-cards-old.json"_s] = "mine";
    QVERIFY(program.save(2, start));
    QCOMPARE(program.copies().size(), 4);
}

void tst_RollingCopies::unreadableBytesAreKeptAsideAndRemoveNothing()
{
    Program program;
    program.files.files[u"backups/study-cards-20261110T080000Z.json"_s] = bytesOf(7);
    program.files.files[u"backups/study-cards-20261110T090000Z.json"_s] = bytesOf(8);
    QCOMPARE(program.store.loadStudyCards().size(), std::size_t(1));
    program.files.files[name] = "written by hand"; // while the program runs
    expectWarning(u"study-cards.json can no longer be read"_s);
    expectWarning(u"its old content is now study-cards.json.unreadable-20261121T101500Z"_s);
    QVERIFY(program.save(2, start));
    QCOMPARE(program.files.files[u"study-cards.json.unreadable-20261121T101500Z"_s], "written by hand"_ba);
    QCOMPARE(program.copies().size(), 2);
    QCOMPARE(program.files.files[name], bytesOf(2));
}

void tst_RollingCopies::aFailureStopsNoSaveAndIsTriedAgainLater_data()
{
    QTest::addColumn<QString>("listFailure");
    QTest::addColumn<QString>("asideFailure");
    QTest::addColumn<QString>("warning");
    QTest::newRow("folder cannot be listed")
        << u"Not a directory"_s << QString()
        << u"backups cannot be listed, so none is made: Not a directory"_s;
    QTest::newRow("copy cannot be made")
        << QString() << u"No space left on device"_s
        << u"no backup of study-cards.json could be made: No space left on device"_s;
}

void tst_RollingCopies::aFailureStopsNoSaveAndIsTriedAgainLater()
{
    QFETCH(QString, listFailure);
    QFETCH(QString, asideFailure);
    QFETCH(QString, warning);
    Program program;
    program.files.listFailure = listFailure;
    program.files.asideFailure = asideFailure;
    expectWarning(warning);
    QVERIFY(program.save(2, start));
    QCOMPARE(program.files.files[name], bytesOf(2));
    QVERIFY(program.save(3, start.addSecs(299))); // no second line
    expectWarning(warning);
    QVERIFY(program.save(4, start.addSecs(300)));

    program.files.listFailure.clear();
    program.files.asideFailure.clear();
    QVERIFY(program.save(5, start.addSecs(599)));
    QVERIFY(program.copies().isEmpty());
    QVERIFY(program.save(6, start.addSecs(600)));
    QCOMPARE(program.copies().size(), 1);
}

void tst_RollingCopies::anOldCopyThatStaysIsNoFailure()
{
    Program program;
    program.files.files[u"backups/study-cards-20261110T080000Z.json"_s] = bytesOf(7);
    program.files.files[u"backups/study-cards-20261110T090000Z.json"_s] = bytesOf(8);
    program.files.removeFailure = u"Permission denied"_s;
    expectWarning(u"the old backup study-cards-20261110T080000Z.json stays: Permission denied"_s);
    QVERIFY(program.save(2, start));
    QCOMPARE(program.copies().size(), 3);
    program.files.removeFailure.clear();
    QVERIFY(program.save(3, start.addSecs(3600)));
    QVERIFY(!program.copies().contains(u"backups/study-cards-20261110T080000Z.json"_s));
}

void tst_RollingCopies::whatIsTooLargeIsNotCopied()
{
    // Nobody looks into these bytes, so they take no room.
    const std::unique_ptr<char, void (*)(void *)> room(static_cast<char *>(std::calloc(mostCopyBytes + 1, 1)),
                                                       std::free);
    QVERIFY(room);
    FakeRecordFiles files;
    RollingCopies copies(files);
    files.files[name] = QByteArray::fromRawData(room.get(), mostCopyBytes + 1);
    expectWarning(u"study-cards.json is too large for a backup: 200000001 bytes"_s);
    QCOMPARE(copies.keepBefore(name, takesAll, start), RollingCopies::Present::MayBeReplaced);
    QVERIFY(files.steps.empty());
}

void tst_RollingCopies::theFolderIsListedOnceAnHour()
{
    Program program;
    UserProgress progress;
    for (int second = 0; second < 7200; ++second) {
        ++progress.totalFocusSeconds;
        QVERIFY(program.store.saveUserProgress(progress, start.addSecs(second)).ok());
    }
    QCOMPARE(program.files.listings, 2);
    QCOMPARE(program.copies().size(), 2);
    QCOMPARE(program.files.steps.size(), std::size_t(7200 + 2));
}

void tst_RollingCopies::aRestoredCopyIsLoaded()
{
    Program program;
    QVERIFY(program.save(0, start)); // a mistake
    program.files.files[name] = program.files.files[firstCopy];
    RecordStore next(program.files);
    QVERIFY(next.loadStudyCards() == cardsOf(1));
}

QUORVEL_TEST(tst_RollingCopies)
#include "tst_RollingCopies.moc"
