// The digits of the clock: what they show while they roll, when they do not, and that nothing of it stays.
#include "retireWindow.h"
#include "setUpInterface.h"
#include "suite.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

using namespace Qt::StringLiterals;

class tst_countdown : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QQuickView> m_window;
    QObject *m_theme = nullptr;

    QQuickItem *clock() const { return m_window->rootObject()->childItems().value(0); }

    void show(const QString &text) const { clock()->setProperty("text", text); }

    /// The cells of the digits, from the first.
    QList<QQuickItem *> cells() const
    {
        QList<QQuickItem *> found;
        for (auto *item : clock()->childItems().value(0)->childItems()) {
            if (item->property("character").isValid())
                found.append(item);
        }
        return found;
    }

    /// What stands in the cells, whatever is on its way out.
    QString shown() const
    {
        QString text;
        for (const auto *cell : cells())
            text += cell->childItems().value(0)->property("text").toString();
        return text;
    }

    /// What is on its way out, with a dot for each digit that rests.
    QString leaving() const
    {
        QString text;
        for (const auto *cell : cells()) {
            const auto *old = cell->childItems().value(1);
            text += old->isVisible() ? old->property("text").toString() : u"."_s;
        }
        return text;
    }

    bool rests() const
    {
        for (const auto *cell : cells()) {
            const auto *digit = cell->childItems().value(0);
            if (cell->childItems().value(1)->isVisible() || digit->y() != 0 || digit->opacity() != 1)
                return false;
        }
        return true;
    }

private Q_SLOTS:
    void initTestCase() { QQuickWindow::setSceneGraphBackend(u"software"_s); }

    void init()
    {
        m_window = std::make_unique<QQuickView>();
        setUpInterface(*m_window->engine());
        QQmlComponent component(m_window->engine());
        component.setData(
            "import QtQuick\nimport Quorvel.Ui\n"
            "Rectangle { property QtObject theme: AppTheme; width: 400; height: 120; color: 'black'\n"
            "    TabularText { text: '18:42'; pixelSize: 68; counting: true }\n}",
            QUrl(u"countdown.qml"_s));
        auto *root = component.create();
        QVERIFY2(root, qPrintable(component.errorString()));
        m_theme = root->property("theme").value<QObject *>();
        m_window->setContent(QUrl(), nullptr, root);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup() { retireWindow(m_window); }

    void onlyWhatChangesRolls()
    {
        show(u"18:41"_s);
        QCOMPARE(shown(), u"18:41"_s);
        QCOMPARE(leaving(), u"....2"_s);
        show(u"17:59"_s); // before the first has come to its end
        QCOMPARE(shown(), u"17:59"_s);
        QCOMPARE(leaving(), u".8.41"_s);
        QTRY_VERIFY(rests());
    }

    void atRestItLooksAsIfItNeverRolled()
    {
        show(u"18:41"_s);
        QTRY_VERIFY(rests());
        const auto rolled = m_window->grabWindow();
        clock()->setProperty("counting", false);
        show(u"18:42"_s);
        show(u"18:41"_s);
        QVERIFY(rests());
        QCOMPARE(m_window->grabWindow(), rolled);
        show(u"18:40"_s);
        QVERIFY(rests());
        QVERIFY(m_window->grabWindow() != rolled); // the pictures do show the digits
    }

    void anotherLengthIsThereAtOnce()
    {
        show(u"1:00:00"_s);
        QCOMPARE(shown(), u"1:00:00"_s);
        QVERIFY(rests());
        show(u"59:59"_s);
        QCOMPARE(shown(), u"59:59"_s);
        QVERIFY(rests());
        show(u"59:58"_s);
        QCOMPARE(leaving(), u"....9"_s);
    }

    void hidingEndsIt()
    {
        show(u"18:41"_s);
        QVERIFY(!rests());
        clock()->setVisible(false);
        QCOMPARE(cells().value(4)->property("rolled").toReal(), 1.0);
        show(u"18:40"_s);
        clock()->setVisible(true);
        QCOMPARE(shown(), u"18:40"_s);
        QVERIFY(rests());
        show(u"18:39"_s);
        QVERIFY(!rests());
        m_window->hide();
        QVERIFY(rests());
        show(u"18:38"_s);
        QVERIFY(rests());
    }

    void nothingRollsWhereMotionIsReduced()
    {
        m_theme->setProperty("reducedMotion", true);
        show(u"18:41"_s);
        QVERIFY(rests());
        m_theme->setProperty("reducedMotion", false);
        show(u"18:40"_s);
        QVERIFY(!rests());
        m_theme->setProperty("reducedMotion", true);
        QVERIFY(rests());
    }

    void nothingRollsUnlessAsked()
    {
        clock()->setProperty("counting", false);
        show(u"18:41"_s);
        QVERIFY(rests());
    }
};

QUORVEL_TEST(tst_countdown, QGuiApplication)
#include "tst_countdown.moc"
