#include "FolderRecordFiles.h"
#include "TextPreferences.h"
#include "testFiles.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTest>

#include <csignal>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace TestFiles;

/// The program is killed at random moments while it writes. The test starts itself again as the one that is
/// killed; that one tells after each call that it has returned.
namespace {

void tell(qint64 number)
{
    if (::write(STDOUT_FILENO, &number, sizeof number) != sizeof number)
        std::_Exit(1);
}

/// Sets "count" one higher with each write, every tenth at once.
void writePreferences(const QString &folder)
{
    TextPreferences preferences(folder);
    qint64 count = preferences.get<qint64>(u"count"_s).value_or(0);
    while (true) {
        ++count;
        preferences.setValue(u"count"_s, count, count % 10 == 0 ? Durability::AtOnce : Durability::Soon);
        tell(count);
    }
}

/// A file whose bytes show whether it is whole: the same number in each line.
QByteArray record(qint64 number)
{
    return (QByteArray::number(number) + '\n').repeated(20'000);
}

qint64 numberOf(const QByteArray &bytes)
{
    return bytes.left(bytes.indexOf('\n')).toLongLong();
}

void writeRecords(const QString &folder)
{
    FolderRecordFiles files(folder);
    const auto before = files.read(u"cards"_s);
    for (qint64 number = before.ok() && before.value() ? numberOf(*before.value()) + 1 : 1;; ++number) {
        if (!files.write(u"cards"_s, record(number)))
            std::_Exit(1);
        tell(number);
    }
}

/// Starts the writer and kills it; returns the number of the last call that returned, or -1.
qint64 killWhileWriting(const QByteArray &what, const QString &folder)
{
    int ends[2];
    if (::pipe(ends) < 0)
        return -1;
    const QByteArray program = QFile::encodeName(QCoreApplication::applicationFilePath());
    const QByteArray place = QFile::encodeName(folder);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
        ::execl(program.constData(), program.constData(), what.constData(), place.constData(), nullptr);
        std::_Exit(1);
    }
    ::close(ends[1]);
    qint64 last = -1;
    qint64 number = 0;
    if (::read(ends[0], &number, sizeof number) == sizeof number) { // it has begun
        last = number;
        ::usleep(QRandomGenerator::global()->bounded(30'000U));
    }
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    while (::read(ends[0], &number, sizeof number) == sizeof number)
        last = number;
    ::close(ends[0]);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL ? last : -1;
}

} // namespace

class tst_suddenEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void preferencesLoseNoWriteThatReturned();
    void recordsAreWhole();
};

void tst_suddenEnd::preferencesLoseNoWriteThatReturned()
{
    QTemporaryDir home;
    int journals = 0;
    for (int round = 0; round < 30; ++round) {
        const qint64 last = killWhileWriting("preferences", home.path());
        QVERIFY2(last > 0, "the writer did not write until it was killed");
        journals += QFile::exists(home.filePath(u"preferences.journal"_s)) ? 1 : 0;

        QTemporaryDir copy; // what a start finds; the next round goes on with the files as they are
        for (const QString &name : names(home.path()))
            QVERIFY(QFile::copy(home.filePath(name), copy.filePath(name)));
        if (QFile::exists(copy.filePath(u"preferences"_s))) {
            const auto document = PreferencesDocument::fromBytes(content(copy.filePath(u"preferences"_s)));
            QCOMPARE(document.linesNotUnderstood(), 0);
        }
        const auto count = TextPreferences(copy.path()).get<qint64>(u"count"_s);
        QVERIFY(count.has_value());
        // The call that was under way may have done its work.
        QVERIFY2(*count == last || *count == last + 1, qPrintable(u"%1 of %2"_s.arg(*count).arg(last)));
    }
    QVERIFY(journals > 0); // or nothing was set soon
}

void tst_suddenEnd::recordsAreWhole()
{
    QTemporaryDir home;
    int leftovers = 0;
    for (int round = 0; round < 30; ++round) {
        const qint64 last = killWhileWriting("records", home.path());
        QVERIFY2(last > 0, "the writer did not write until it was killed");
        leftovers += QFile::exists(home.filePath(u".cards.new"_s)) ? 1 : 0;
        const QByteArray bytes = content(home.filePath(u"cards"_s));
        const qint64 number = numberOf(bytes);
        QVERIFY2(number == last || number == last + 1, qPrintable(u"%1 of %2"_s.arg(number).arg(last)));
        QVERIFY(bytes == record(number));
    }
    QVERIFY(leftovers > 0); // or it was never killed in the middle of a write
    QVERIFY(FolderRecordFiles(home.path()).write(u"cards"_s, "[]").ok());
    QCOMPARE(names(home.path()), QStringList{u"cards"_s});
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QByteArray what = argc == 3 ? argv[1] : "";
    if (what == "preferences")
        writePreferences(QFile::decodeName(argv[2]));
    if (what == "records")
        writeRecords(QFile::decodeName(argv[2]));
    tst_suddenEnd test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_suddenEnd.moc"
