#include "statusIcon.h"
#include "statusTitle.h"

#include <QTest>

using namespace Qt::StringLiterals;
using Mode = QuorvelController::Mode;

class tst_statusTitle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void title_data()
    {
        QTest::addColumn<Mode>("mode");
        QTest::addColumn<qint64>("study");
        QTest::addColumn<qint64>("rest");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("figure");
        const auto row = [](const char *name, Mode mode, qint64 study, qint64 rest, const QString &title,
                            const QString &figure) {
            QTest::newRow(name) << mode << study << rest << title << figure;
        };
        row("ready", Mode::Ready, 1500, 0, u"QV Ready"_s, u""_s);
        row("locked", Mode::Locked, 1500, 0, u"QV Locked"_s, u""_s);
        row("full session", Mode::Studying, 1500, 0, u"QV 25:00"_s, u"25"_s);
        row("started minute", Mode::Studying, 1499, 0, u"QV 24:59"_s, u"25"_s);
        row("last minute", Mode::Studying, 59, 7, u"QV 00:59"_s, u"1"_s);
        row("over", Mode::Studying, 0, 0, u"QV 00:00"_s, u"0"_s);
        row("below zero", Mode::Studying, -5, 0, u"QV 00:00"_s, u"0"_s);
        row("one hour", Mode::Studying, 3600, 0, u"QV 1:00:00"_s, u"60"_s);
        row("just two digits", Mode::Studying, 99 * 60, 0, u"QV 1:39:00"_s, u"99"_s);
        row("hours", Mode::Studying, 99 * 60 + 1, 0, u"QV 1:39:01"_s, u"2h"_s);
        row("break", Mode::BreakTime, 1500, 3725, u"QV Break 1:02:05"_s, u"63"_s);
        row("short break", Mode::BreakTime, 1500, 60, u"QV Break 01:00"_s, u"1"_s);
    }

    void title()
    {
        QFETCH(Mode, mode);
        QFETCH(qint64, study);
        QFETCH(qint64, rest);
        QTEST(statusTitle(mode, study, rest), "title");
        QTEST(statusLook(mode, study, rest).figure, "figure");
    }

    void iconShowsFigureAndMode()
    {
        const auto picture = [](Mode mode, const QString &figure) {
            return drawStatusIcon({mode, figure}).pixmap(22, 22).toImage();
        };
        const auto studying = picture(Mode::Studying, u"25"_s);
        QCOMPARE(studying.size(), QSize(22, 22));
        QVERIFY(studying != picture(Mode::Studying, u"24"_s));
        QVERIFY(studying != picture(Mode::BreakTime, u"25"_s));
        QVERIFY(picture(Mode::Ready, {}) != picture(Mode::Locked, {}));
        QCOMPARE(studying.pixel(2, 11), qRgb(161, 84, 255)); // the accent, beside the figure
    }
};

QTEST_MAIN(tst_statusTitle)
#include "tst_statusTitle.moc"
