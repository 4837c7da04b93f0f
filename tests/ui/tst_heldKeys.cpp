// Keys that are held: what presses is pressed once, what is typed into takes every repetition.
#include "retireWindow.h"
#include "setUpInterface.h"
#include "suite.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>

using namespace Qt::StringLiterals;

class tst_heldKeys : public QObject
{
    Q_OBJECT

    std::unique_ptr<QQuickView> m_window;

    void hold(Qt::Key key, const QString &text) const
    {
        const auto send = [&](QEvent::Type type, bool repeated) {
            QKeyEvent event(type, key, Qt::NoModifier, text, repeated);
            QCoreApplication::sendEvent(m_window.get(), &event);
        };
        send(QEvent::KeyPress, false);
        for (int repetition = 0; repetition < 5; ++repetition) { // as X11 tells them
            send(QEvent::KeyRelease, true);
            send(QEvent::KeyPress, true);
        }
        send(QEvent::KeyRelease, false);
    }

    QQuickItem *item(const QString &name) const
    {
        return m_window->rootObject()->findChild<QQuickItem *>(name);
    }

    int pressed() const { return m_window->rootObject()->property("pressed").toInt(); }

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QQuickView>();
        setUpInterface(*m_window->engine());
        auto *component = new QQmlComponent(m_window->engine(), m_window.get());
        component->setData(R"(
            import QtQuick
            import Quorvel.Ui
            FocusScope {
                id: root
                property int pressed: 0
                GlassButton { objectName: "quiet"; text: "a"; onClicked: ++root.pressed }
                PrimaryButton { objectName: "main"; text: "a"; onClicked: ++root.pressed }
                GlassSwitch { objectName: "switch"; accessibleName: "a"; onToggled: ++root.pressed }
                SidebarButton {
                    objectName: "section"; text: "a"; iconName: "lock"; current: false; onClicked: ++root.pressed
                }
                GlassField { objectName: "field"; draft: ""; accessibleName: "a"; onAccepted: ++root.pressed }
                GlassTextArea { objectName: "area"; draft: ""; accessibleName: "a" }
            })",
                           QUrl(u"held.qml"_s));
        auto *root = component->create();
        QVERIFY2(root, qPrintable(component->errorString()));
        m_window->setContent(QUrl(), component, root);
        m_window->show();
        m_window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void cleanup() { retireWindow(m_window); }

    void pressesOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Qt::Key>("key");
        for (const auto *name : {"quiet", "main", "switch", "section"}) {
            for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
                QTest::addRow("%s, %d", name, int(key)) << QString::fromLatin1(name) << key;
        }
        QTest::addRow("field") << u"field"_s << Qt::Key_Return;
    }
    void pressesOnce()
    {
        QFETCH(QString, name);
        QFETCH(Qt::Key, key);
        item(name)->forceActiveFocus(Qt::TabFocusReason);
        hold(key, {});
        QCOMPARE(pressed(), 1);
        hold(key, {});
        QCOMPARE(pressed(), 2);
    }

    void typesOnAndOn_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("text");
        QTest::addRow("spaces of a field") << u"field"_s << Qt::Key_Space << u" "_s;
        QTest::addRow("letters of a field") << u"field"_s << Qt::Key_A << u"a"_s;
        QTest::addRow("lines of an area") << u"area"_s << Qt::Key_Return << u"\n"_s;
    }
    void typesOnAndOn()
    {
        QFETCH(QString, name);
        QFETCH(Qt::Key, key);
        QFETCH(QString, text);
        QQuickItem *input = nullptr;
        for (auto *part : item(name)->findChildren<QQuickItem *>()) {
            if (part->flags().testFlag(QQuickItem::ItemAcceptsInputMethod))
                input = part;
        }
        QVERIFY(input);
        input->forceActiveFocus(Qt::TabFocusReason);
        hold(key, text);
        QCOMPARE(input->property("length").toInt(), 6);
    }
};

QUORVEL_TEST(tst_heldKeys, QGuiApplication)
#include "tst_heldKeys.moc"
