#include "FailingFileCalls.h"
#include "PreferencesJournal.h"
#include "suite.h"
#include "testFiles.h"

using namespace Qt::StringLiterals;
using namespace TestFiles;

namespace {

/// The values and removals of a journal, written again as lines.
QByteArray linesOf(const QString &path, const QString &base)
{
    PreferencesJournal journal(QFile::encodeName(path), FileCalls::system());
    QByteArray lines;
    for (const PreferenceLine &line : journal.read(base)) {
        const bool removal = line.kind == PreferenceLine::Kind::Removal;
        lines += writePreferenceLine(line.key, removal ? std::nullopt : std::optional(line.value)) + '\n';
    }
    return lines;
}

} // namespace

class tst_preferencesJournal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void countsOnlyBesideItsFile();
    void goesOnAfterReading();
    void beginsAnewForAnotherFile();
    void endsBeforeATornLine_data();
    void endsBeforeATornLine();
    void aTornLineIsOverwritten();
    void aLineThatFailedIsOverwritten();
    void ignoresOtherFiles_data();
    void ignoresOtherFiles();
    void discards();
    void doesNotFollowALink();

private:
    QString path() const { return m_home->filePath(u"journal"_s); }
    QByteArray native() const { return QFile::encodeName(path()); }

    std::unique_ptr<QTemporaryDir> m_home;
};

void tst_preferencesJournal::countsOnlyBesideItsFile()
{
    PreferencesJournal journal(native(), FileCalls::system());
    QVERIFY(journal.read(u"one"_s).empty());
    QVERIFY(!QFile::exists(path()));
    QCOMPARE(journal.append(u"one"_s, "a = 1\nb = null\n"), 0);
    QCOMPARE(journal.append(u"one"_s, "a = 2\n"), 0);
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray("a = 1\nb = null\na = 2\n"));
    QCOMPARE(linesOf(path(), u"two"_s), QByteArray());
    QCOMPARE(mode(path()), 0600);
}

void tst_preferencesJournal::goesOnAfterReading()
{
    QCOMPARE(PreferencesJournal(native(), FileCalls::system()).append(u"one"_s, "a = 1\n"), 0);
    PreferencesJournal journal(native(), FileCalls::system());
    QVERIFY(!journal.continues(u"one"_s));
    QCOMPARE(journal.read(u"one"_s).size(), std::size_t(1));
    QVERIFY(journal.continues(u"one"_s));
    QCOMPARE(journal.append(u"one"_s, "b = 2\n"), 0);
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray("a = 1\nb = 2\n"));
}

void tst_preferencesJournal::beginsAnewForAnotherFile()
{
    PreferencesJournal journal(native(), FileCalls::system());
    QCOMPARE(journal.append(u"one"_s, "a = 1\nb = 2\nc = 3\n"), 0);
    QVERIFY(!journal.continues(u"two"_s));
    QCOMPARE(journal.append(u"two"_s, "d = 4\n"), 0);
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray());
    QCOMPARE(linesOf(path(), u"two"_s), QByteArray("d = 4\n"));
}

void tst_preferencesJournal::endsBeforeATornLine_data()
{
    QTest::addColumn<QByteArray>("torn");
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("no line end") << QByteArray("a = 1\nb = 2") << QByteArray("a = 1\n");
    QTest::newRow("zeros") << QByteArray("a = 1\n\0\0\0\0\nb = 2\n", 17) << QByteArray("a = 1\n");
    QTest::newRow("zeros inside") << QByteArray("a = 1\nb = \0\0\nc = 2\n", 19) << QByteArray("a = 1\n");
    QTest::newRow("a blank line") << QByteArray("a = 1\n\nb = 2\n") << QByteArray("a = 1\n");
}

void tst_preferencesJournal::endsBeforeATornLine()
{
    QFETCH(QByteArray, torn);
    put(path(), "journal-of = \"one\"\n" + torn);
    QTEST(linesOf(path(), u"one"_s), "lines");
}

void tst_preferencesJournal::aTornLineIsOverwritten()
{
    put(path(), "journal-of = \"one\"\na = 1\nseconds = 9");
    PreferencesJournal journal(native(), FileCalls::system());
    QCOMPARE(journal.read(u"one"_s).size(), std::size_t(1));
    QCOMPARE(journal.append(u"one"_s, "b = 2\n"), 0);
    QCOMPARE(content(path()), QByteArray("journal-of = \"one\"\na = 1\nb = 2\n"));
}

void tst_preferencesJournal::aLineThatFailedIsOverwritten()
{
    FailingFileCalls calls;
    PreferencesJournal journal(native(), calls);
    QCOMPARE(journal.append(u"one"_s, "a = 1\n"), 0);
    calls.longestWrite = 4;
    calls.failingStep = calls.steps.size() + 1;
    calls.error = ENOSPC;
    QCOMPARE(journal.append(u"one"_s, "seconds = 90\n"), ENOSPC); // four bytes were taken
    QCOMPARE(content(path()), QByteArray("journal-of = \"one\"\na = 1\nseco"));
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray("a = 1\n"));
    QCOMPARE(journal.append(u"one"_s, "seconds = 91\n"), 0);
    QCOMPARE(content(path()), QByteArray("journal-of = \"one\"\na = 1\nseconds = 91\n"));
}

void tst_preferencesJournal::ignoresOtherFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no base") << QByteArray("a = 1\n");
    QTest::newRow("torn base") << QByteArray("journal-of = \"o");
    QTest::newRow("base of another type") << QByteArray("journal-of = 1\na = 1\n");
    QTest::newRow("garbage") << QByteArray("\x80\xff\0\n\n", 5);
}

void tst_preferencesJournal::ignoresOtherFiles()
{
    QFETCH(QByteArray, bytes);
    put(path(), bytes);
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray());
    PreferencesJournal journal(native(), FileCalls::system());
    QVERIFY(journal.read(u"one"_s).empty());
    QCOMPARE(journal.append(u"one"_s, "b = 2\n"), 0);
    QCOMPARE(content(path()), QByteArray("journal-of = \"one\"\nb = 2\n"));
}

void tst_preferencesJournal::discards()
{
    PreferencesJournal journal(native(), FileCalls::system());
    QCOMPARE(journal.discard(), 0); // nothing there
    QCOMPARE(journal.append(u"one"_s, "a = 1\n"), 0);
    QCOMPARE(journal.discard(), 0);
    QVERIFY(!QFile::exists(path()));
    QVERIFY(!journal.continues(u"one"_s));
    QCOMPARE(journal.append(u"one"_s, "b = 2\n"), 0);
    QCOMPARE(linesOf(path(), u"one"_s), QByteArray("b = 2\n"));
}

void tst_preferencesJournal::doesNotFollowALink()
{
    put(m_home->filePath(u"elsewhere"_s), "precious");
    symbolicLink(u"elsewhere"_s, path());
    PreferencesJournal journal(native(), FileCalls::system());
    QCOMPARE(journal.append(u"one"_s, "a = 1\n"), ELOOP);
    QCOMPARE(content(m_home->filePath(u"elsewhere"_s)), QByteArray("precious"));
}

QUORVEL_TEST(tst_preferencesJournal)
#include "tst_preferencesJournal.moc"
