#include "FakeRecordFiles.h"
#include "FolderRecordFiles.h"

#include <QTemporaryDir>
#include <QTest>

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

QTEST_APPLESS_MAIN(tst_recordFilesContract)
#include "tst_recordFilesContract.moc"
