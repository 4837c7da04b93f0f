#include "FakeRecordFiles.h"
#include "FolderRecordFiles.h"
#include "suite.h"

#include <QTemporaryDir>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

/// What every RecordFiles does, the fake that other tests trust included.
class tst_recordFilesContract : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatWasWritten_data() { adapters(); }
    void readsWhatWasWritten();
    void keepsAsideWhatIsReplaced_data() { adapters(); }
    void keepsAsideWhatIsReplaced();
    void neverReplacesWhatIsKept_data() { adapters(); }
    void neverReplacesWhatIsKept();
    void keepsInAFolderAndListsIt_data() { adapters(); }
    void keepsInAFolderAndListsIt();
    void failsToKeepWhatIsNotThere_data() { adapters(); }
    void failsToKeepWhatIsNotThere();
    void removes_data() { adapters(); }
    void removes();

private:
    static void adapters();
    std::unique_ptr<RecordFiles> make();

    std::unique_ptr<QTemporaryDir> m_home;
};

void tst_recordFilesContract::adapters()
{
    QTest::addColumn<bool>("real");
    QTest::newRow("fake") << false;
    QTest::newRow("folder") << true;
}

std::unique_ptr<RecordFiles> tst_recordFilesContract::make()
{
    QFETCH(bool, real);
    m_home = std::make_unique<QTemporaryDir>();
    if (real)
        return std::make_unique<FolderRecordFiles>(m_home->filePath(u"folder"_s));
    return std::make_unique<FakeRecordFiles>();
}

void tst_recordFilesContract::readsWhatWasWritten()
{
    const auto files = make();
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>());
    QVERIFY(files->write(u"cards"_s, "one").ok());
    QVERIFY(files->write(u"tasks"_s, "").ok());
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>("one"));
    QCOMPARE(files->read(u"tasks"_s).value(), std::optional<QByteArray>(""));
    QVERIFY(files->write(u"cards"_s, "two").ok());
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>("two"));
}

void tst_recordFilesContract::keepsAsideWhatIsReplaced()
{
    const auto files = make();
    QVERIFY(files->write(u"cards"_s, "one").ok());
    QVERIFY(files->keepAside(u"cards"_s, u"aside"_s).ok());
    QVERIFY(files->write(u"cards"_s, "two").ok());
    QCOMPARE(files->read(u"aside"_s).value(), std::optional<QByteArray>("one"));
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>("two"));
}

void tst_recordFilesContract::neverReplacesWhatIsKept()
{
    const auto files = make();
    QVERIFY(files->write(u"cards"_s, "one").ok());
    QVERIFY(files->keepAside(u"cards"_s, u"backups/aside"_s).ok());
    QVERIFY(files->write(u"cards"_s, "two").ok());
    QVERIFY(files->keepAside(u"cards"_s, u"backups/aside"_s).ok());
    QCOMPARE(files->read(u"backups/aside"_s).value(), std::optional<QByteArray>("one"));
    QCOMPARE(files->list(u"backups"_s).value().size(), std::size_t(2));
}

void tst_recordFilesContract::keepsInAFolderAndListsIt()
{
    const auto files = make();
    QVERIFY(files->list(u"backups"_s).value().empty());
    QVERIFY(files->write(u"cards"_s, "one").ok());
    QVERIFY(files->list(u"backups"_s).value().empty());
    QVERIFY(files->keepAside(u"cards"_s, u"backups/a"_s).ok());
    QVERIFY(files->write(u"cards"_s, "three").ok());
    QVERIFY(files->keepAside(u"cards"_s, u"backups/b"_s).ok());
    auto listed = files->list(u"backups"_s).value();
    std::sort(listed.begin(), listed.end(), [](auto &left, auto &right) { return left.name < right.name; });
    QCOMPARE(listed, (std::vector<ListedFile>{{u"a"_s, 3}, {u"b"_s, 5}}));
    QCOMPARE(files->read(u"backups/a"_s).value(), std::optional<QByteArray>("one"));
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>("three"));
}

void tst_recordFilesContract::failsToKeepWhatIsNotThere()
{
    const auto files = make();
    QVERIFY(!files->keepAside(u"cards"_s, u"backups/a"_s).ok());
    QVERIFY(files->list(u"backups"_s).value().empty());
}

void tst_recordFilesContract::removes()
{
    const auto files = make();
    QVERIFY(files->remove(u"backups/a"_s).ok());
    QVERIFY(files->write(u"cards"_s, "one").ok());
    QVERIFY(files->keepAside(u"cards"_s, u"backups/a"_s).ok());
    QVERIFY(files->remove(u"backups/a"_s).ok());
    QVERIFY(files->list(u"backups"_s).value().empty());
    QCOMPARE(files->read(u"cards"_s).value(), std::optional<QByteArray>("one"));
}

QUORVEL_TEST(tst_recordFilesContract)
#include "tst_recordFilesContract.moc"
