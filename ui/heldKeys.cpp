#include "heldKeys.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

namespace {

class RepeatedPresses : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        const auto *window = key->isAutoRepeat() ? qobject_cast<QQuickWindow *>(watched) : nullptr;
        if (!window)
            return false;
        const auto *item = window->activeFocusItem();
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return !item || !item->inherits("QQuickTextEdit"); // a field of one line has nothing to repeat
        case Qt::Key_Space:
            return !item || !item->flags().testFlag(QQuickItem::ItemAcceptsInputMethod);
        default:
            return false;
        }
    }
};

} // namespace

void pressHeldKeysOnce(QCoreApplication &application)
{
    static const auto name = QStringLiteral("held keys");
    if (application.findChild<QObject *>(name, Qt::FindDirectChildrenOnly))
        return;
    auto *filter = new RepeatedPresses(&application); // which owns it
    filter->setObjectName(name);
    application.installEventFilter(filter);
}
