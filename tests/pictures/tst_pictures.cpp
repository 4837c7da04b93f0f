// The window looks as in docs/pictures.
#include "pictureComparison.h"
#include "pictureSet.h"

#include <QDir>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QDir storedFolder(QStringLiteral(QUORVEL_PICTURES));

QImage storedPicture(const QString &name)
{
    return QImage(storedFolder.filePath(name));
}

} // namespace

class tst_pictures : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    /// The difference, with the picture of it left where a person finds it.
    static void tell(const PictureDifference &difference, const QString &name)
    {
        const QDir folder(QStringLiteral(QUORVEL_DIFFERENCES));
        QVERIFY(folder.mkpath(u"."_s));
        const auto path = folder.filePath(name);
        QVERIFY(difference.picture.save(path));
        const auto message =
            u"%1: %2. %3 shows where in red. If the window is to look so, take the new "
            "pictures in:\n%4 --all %5"_s.arg(name, difference.summary(), path,
                                              QStringLiteral(QUORVEL_PREVIEW), storedFolder.path());
        QFAIL(qPrintable(message));
    }

private Q_SLOTS:
    void nothingIsStoredThatIsNotDrawn()
    {
        QStringList drawn;
        for (const auto &picture : pictureSet())
            drawn.append(picture.name);
        drawn.sort();
        QCOMPARE(storedFolder.entryList({u"*.png"_s}, QDir::Files, QDir::Name), drawn);
    }

    void theWindowLooksAsStored_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("arguments");
        for (const auto &picture : pictureSet())
            QTest::newRow(qPrintable(picture.name)) << picture.name << picture.arguments;
    }

    void theWindowLooksAsStored()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, arguments);
        const auto path = m_folder.filePath(name);
        QProcess preview;
        preview.setProcessChannelMode(QProcess::MergedChannels);
        preview.start(QStringLiteral(QUORVEL_PREVIEW), arguments + QStringList{u"--output"_s, path});
        QVERIFY(preview.waitForFinished(60'000));
        QVERIFY2(preview.exitStatus() == QProcess::NormalExit && preview.exitCode() == 0,
                 preview.readAll().constData());
        const auto stored = storedPicture(name);
        QVERIFY2(!stored.isNull(), qPrintable(storedFolder.filePath(name) + u" is not there"_s));
        const auto difference = comparePictures(QImage(path), stored);
        if (difference.isVisible())
            tell(difference, name);
    }

    // What the comparison sees, on a picture that is there.

    void roundingPasses()
    {
        const auto stored = storedPicture(u"focus-en.png"_s);
        auto drawn = stored;
        for (int row = 0; row < drawn.height(); ++row) {
            for (int column = 0; column < drawn.width(); ++column) {
                const int step = (row * 7 + column * 3) % 5 - 2;
                const QColor color = drawn.pixelColor(column, row);
                const auto moved = [step](int channel) { return std::clamp(channel + step, 0, 255); };
                drawn.setPixelColor(column, row,
                                    QColor(moved(color.red()), moved(color.green()), moved(color.blue())));
            }
        }
        QVERIFY(!comparePictures(drawn, stored).isVisible());
    }

    void aPanelThatMovedByTwoPixelsIsSeen()
    {
        const auto stored = storedPicture(u"focus-en.png"_s);
        auto drawn = stored;
        const QRect panel(300, 560, 860, 230);
        QPainter(&drawn).drawImage(panel.topLeft() + QPoint(0, 2), stored.copy(panel));
        QVERIFY(comparePictures(drawn, stored).isVisible());
    }

    void aColourThatIsThreePercentOffIsSeen()
    {
        const auto stored = storedPicture(u"focus-en.png"_s);
        auto drawn = stored;
        const QRect bar(326, 294, 100, 6);
        const QColor color = stored.pixelColor(bar.center());
        QPainter(&drawn).fillRect(bar, QColor(color.red(), color.green() + qRound(0.03 * 255), color.blue()));
        QVERIFY(comparePictures(drawn, stored).isVisible());
    }

    void aMissingIconIsSeen()
    {
        const auto stored = storedPicture(u"focus-en.png"_s);
        auto drawn = stored;
        const QRect icon(31, 187, 20, 20); // in the sidebar
        QPainter(&drawn).drawImage(icon.topLeft(), stored.copy(icon.translated(0, 24)));
        QVERIFY(comparePictures(drawn, stored).isVisible());
    }
};

QTEST_GUILESS_MAIN(tst_pictures)
#include "tst_pictures.moc"
