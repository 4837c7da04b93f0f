#include "PreviewWindow.h"

#include "patience.h"
#include "setUpInterface.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QStyleHints>
#include <QtMath>
#include <QtQml/qqmlextensionplugin.h>

using namespace Qt::StringLiterals;

Q_IMPORT_QML_PLUGIN(Quorvel_UiPlugin)

namespace {

constexpr int restingTime = 60;   ///< milliseconds without a frame after which it rests
constexpr int tallestPage = 8000; ///< logical pixels; a list may go on for ever

bool anyImageLoads(const QQuickItem &item)
{
    constexpr int loading = 2; // Image.Loading
    if (item.inherits("QQuickImage") && item.property("status").toInt() == loading)
        return true;
    const auto children = item.childItems();
    return std::any_of(children.begin(), children.end(),
                       [](const QQuickItem *child) { return anyImageLoads(*child); });
}

void collectFlickables(QQuickItem &item, QList<QQuickItem *> &found)
{
    if (!item.isVisible())
        return;
    if (item.inherits("QQuickFlickable"))
        found.append(&item);
    const auto children = item.childItems();
    for (auto *child : children)
        collectFlickables(*child, found);
}

/// A button's text becomes its accessible name only where somebody listens on the desktop.
QString nameOf(const QAccessibleInterface &node)
{
    const auto name = node.text(QAccessible::Name);
    return name.isEmpty() ? node.object()->property("text").toString() : name;
}

QQuickItem *controlBelow(QAccessibleInterface *node, const QString &name)
{
    if (!node || node->state().invisible)
        return nullptr;
    auto *item = qobject_cast<QQuickItem *>(node->object());
    if (item && !item->inherits("QQuickText") && node->state().focusable && nameOf(*node) == name)
        return item;
    for (int index = 0; index < node->childCount(); ++index) {
        if (auto *found = controlBelow(node->child(index), name))
            return found;
    }
    return nullptr;
}

} // namespace

QQuickItem *controlNamed(QQuickView &view, const QString &name)
{
    return controlBelow(QAccessible::queryAccessibleInterface(&view), name);
}

PreviewWindow::PreviewWindow(PreviewScene &scene, ProductSection section, QSize size)
{
    QGuiApplication::styleHints()->setCursorFlashTime(0); // a caret that blinks never rests
    setUpInterface(*m_view.engine());
    m_view.setResizeMode(QQuickView::SizeRootObjectToView);
    m_view.setInitialProperties({{u"controller"_s, QVariant::fromValue(&scene.controller())},
                                 {u"desktopSupport"_s, QVariant::fromValue(&scene.desktopSupport())},
                                 {u"selection"_s, int(section)}});
    QObject::connect(&m_view, &QQuickWindow::frameSwapped, &m_view, [this] { ++m_frames; });
    m_view.setSource(QUrl(u"qrc:/qt/qml/Quorvel/Ui/ContentView.qml"_s));
    m_view.resize(size);
}

void PreviewWindow::show(ProductSection section)
{
    content().setProperty("selection", int(section));
}

Result<> PreviewWindow::settle()
{
    if (m_view.status() != QQuickView::Ready)
        return Failure{u"The window cannot be loaded."_s};
    m_view.show();
    const QDeadlineTimer deadline(patience);
    QElapsedTimer resting;
    resting.start();
    for (int seen = -1; m_frames == 0 || resting.elapsed() < restingTime || anyImageLoads(content());) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
        QCoreApplication::processEvents();
        if (m_frames != seen) {
            seen = m_frames;
            resting.restart();
        }
        if (deadline.hasExpired())
            return Failure{m_frames == 0 ? u"The window is never drawn."_s
                                         : u"The window never comes to rest."_s};
    }
    return Done{};
}

Result<> PreviewWindow::drawAnew()
{
    if (const auto settled = settle(); !settled)
        return settled;
    m_view.setPersistentGraphics(false);
    m_view.setPersistentSceneGraph(false);
    m_view.hide();
    return settle();
}

Result<QImage> PreviewWindow::grab()
{
    if (const auto settled = settle(); !settled)
        return settled.failure();
    auto image = m_view.grabWindow();
    if (image.isNull())
        return Failure{u"The window gives no picture."_s};
    image.setDevicePixelRatio(m_view.devicePixelRatio());
    return image;
}

QQuickItem *PreviewWindow::page()
{
    QList<QQuickItem *> flickables;
    collectFlickables(content(), flickables);
    const auto widest = std::max_element(flickables.begin(), flickables.end(), [](auto *left, auto *right) {
        return left->width() * left->height() < right->width() * right->height();
    });
    return widest == flickables.end() ? nullptr : *widest;
}

Result<> PreviewWindow::growToPage()
{
    for (int pass = 0; pass < 3; ++pass) { // a list knows its height only once its rows are there
        if (const auto settled = settle(); !settled)
            return settled;
        const auto *shown = page();
        const auto tall = shown ? shown->property("contentHeight").toReal() : 0;
        m_view.resize(m_view.width(), std::clamp(qCeil(tall), m_view.height(), tallestPage));
    }
    return settle();
}

Result<> PreviewWindow::scrollTo(double distance)
{
    if (const auto settled = settle(); !settled)
        return settled;
    if (auto *shown = page()) {
        const auto first = shown->property("originY").toReal();
        const auto last = first + shown->property("contentHeight").toReal() - shown->height();
        shown->setProperty("contentY", std::max(first, std::min(last, first + distance)));
    }
    return settle();
}

Result<> PreviewWindow::focus(const QString &name)
{
    if (const auto settled = settle(); !settled)
        return settled;
    m_view.requestActivate();
    const QDeadlineTimer deadline(patience);
    while (!m_view.isActive() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 10);
    auto *control = controlNamed(m_view, name);
    if (!control)
        return Failure{u"No control that can have the keyboard is called \"%1\"."_s.arg(name)};
    control->forceActiveFocus(Qt::TabFocusReason);
    if (!control->hasActiveFocus())
        return Failure{u"\"%1\" does not take the keyboard."_s.arg(name)};
    return settle();
}

void PreviewWindow::leaveFocus()
{
    if (auto *item = m_view.activeFocusItem())
        item->setFocus(false);
}
