#pragma once

#include "ControllerHarness.h"
#include "DesktopSupport.h"
#include "retireWindow.h"
#include "setUpInterface.h"

#include <QQmlEngine>
#include <QQuickView>
#include <QTest>

#include <memory>

/// A test of the real window over a controller of its own, which a guest has entered.
class RealWindowTest : public QObject
{
protected:
    std::unique_ptr<ControllerHarness> m_harness;
    std::unique_ptr<DesktopSupport> m_support;
    std::unique_ptr<QQuickView> m_window;

    QuorvelController &controller() const { return *m_harness->controller; }

    void openWindow()
    {
        m_harness = std::make_unique<ControllerHarness>();
        m_harness->start().continueAsGuest();
        m_support = std::make_unique<DesktopSupport>();
        m_window = std::make_unique<QQuickView>();
        m_window->setTitle(QStringLiteral("Quorvel"));
        setUpInterface(*m_window->engine());
        m_window->setResizeMode(QQuickView::SizeRootObjectToView);
        m_window->setInitialProperties(
            {{QStringLiteral("controller"), QVariant::fromValue(&controller())},
             {QStringLiteral("desktopSupport"), QVariant::fromValue(m_support.get())}});
        m_window->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Quorvel/Ui/ContentView.qml")));
        m_window->resize(1180, 820);
        m_window->show();
        m_window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void closeWindow()
    {
        retireWindow(m_window);
        m_support.reset();
        m_harness.reset();
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(m_window.get(), key, modifiers);
    }
};
