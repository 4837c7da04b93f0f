#include "RecentEventModel.h"
#include "suite.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

class TestRecentEventModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNewestStandsFirstAndTheOldestGoes()
    {
        RecentEventModel model;
        for (const auto &line : {u"a"_s, u"b"_s, u"c"_s})
            model.prepend(line, 2);
        QCOMPARE(model.lines(), QStringList({u"c"_s, u"b"_s}));
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.data(model.index(1), RecentEventModel::LineRole), QVariant(u"b"_s));
    }

    void itNamesTheRowsThatChangeOnceTheyHaveChanged()
    {
        RecentEventModel model;
        const QAbstractItemModelTester tester(&model); // compares the number of rows with what is announced
        const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
        const QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QString firstLine;
        connect(&model, &QAbstractItemModel::rowsInserted, this, [&] { firstLine = model.lines().value(0); });
        model.prepend(u"a"_s, 1);
        QCOMPARE(firstLine, u"a"_s);
        QCOMPARE(removed.size(), 0);
        model.prepend(u"b"_s, 1);
        QCOMPARE(firstLine, u"b"_s);
        QCOMPARE(inserted, (QList<QVariantList>{{QModelIndex(), 0, 0}, {QModelIndex(), 0, 0}}));
        QCOMPARE(removed, (QList<QVariantList>{{QModelIndex(), 1, 1}}));
    }

    void aRowThatIsNotThereIsEmpty()
    {
        RecentEventModel model;
        model.prepend(u"a"_s, 8);
        const auto row = model.index(0);
        QCOMPARE(model.rowCount(row), 0);
        QCOMPARE(model.data(QModelIndex(), RecentEventModel::LineRole), QVariant());
        QCOMPARE(model.data(row, Qt::DecorationRole), QVariant());
        model.prepend(u"b"_s, 0);
        QCOMPARE(model.data(row, RecentEventModel::LineRole), QVariant());
    }
};

QUORVEL_TEST(TestRecentEventModel, QCoreApplication)
#include "tst_RecentEventModel.moc"
