#include "AccessibleItem.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QQuickItem>

#include <algorithm>

namespace {

bool isLabel(QAccessible::Role role)
{
    return role == QAccessible::StaticText || role == QAccessible::Heading;
}

bool isButton(const QQuickItem *item)
{
    // A later Qt has a method of this name, which presses, and its doAction() calls it.
    return item->inherits("QQuickAbstractButton") &&
           item->metaObject()->indexOfMethod("accessiblePressAction()") < 0;
}

/// The space bar goes through all that a click goes through: it shows the button pressed, lets it change its
/// state and tells each of its signals.
void click(QQuickItem *button)
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "));
        QCoreApplication::sendEvent(button, &event);
    }
}

void tellEnabled(QQuickItem *item)
{
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent event(item, changed);
    QAccessible::updateAccessibility(&event);
}

} // namespace

AccessibleItem::AccessibleItem(QQuickItem *item)
    : QAccessibleQuickItem(item)
{
    QObject::connect(item, &QQuickItem::enabledChanged, item, [item] { tellEnabled(item); });
}

QAccessible::State AccessibleItem::state() const
{
    auto state = QAccessibleQuickItem::state();
    state.disabled = !item()->isEnabled();
    if (state.disabled || (isLabel(role()) && !item()->activeFocusOnTab()))
        state.focusable = false;
    if (role() == QAccessible::CheckBox || role() == QAccessible::RadioButton)
        state.checkable = true;
    if (role() == QAccessible::EditableText) {
        state.readOnly = !isWritable();
        state.editable = isWritable();
        state.multiLine = textDocument() != nullptr;
    }
    return state;
}

QString AccessibleItem::text(QAccessible::Text kind) const
{
    if (kind == QAccessible::Value && isLabel(role()))
        return item()->property("text").toString();
    return QAccessibleQuickItem::text(kind);
}

void AccessibleItem::setText(QAccessible::Text kind, const QString &text)
{
    if (kind == QAccessible::Value)
        replaceText(0, characterCount(), text);
}

void AccessibleItem::doAction(const QString &name)
{
    if (!item()->isEnabled())
        return;
    const bool presses = name == pressAction() || name == toggleAction();
    if (presses && isButton(item()))
        click(item());
    else
        QAccessibleQuickItem::doAction(name);
}

QString AccessibleItem::text(int start, int end) const
{
    auto text = QAccessibleQuickItem::text(start, end);
    return text.replace(QChar::ParagraphSeparator, QChar::LineFeed); // a document's own sign for a line's end
}

void AccessibleItem::addSelection(int start, int end)
{
    setSelection(0, start, end);
}

void AccessibleItem::removeSelection(int number)
{
    if (number == 0)
        QMetaObject::invokeMethod(item(), "deselect");
}

void AccessibleItem::setSelection(int number, int start, int end)
{
    if (number == 0)
        QMetaObject::invokeMethod(item(), "select", Q_ARG(int, start), Q_ARG(int, end));
}

void AccessibleItem::deleteText(int start, int end)
{
    replaceText(start, end, QString());
}

void AccessibleItem::insertText(int offset, const QString &text)
{
    replaceText(offset, offset, text);
}

/// As an input method puts text in: the field takes it for typed, and so tells its owner, once.
void AccessibleItem::replaceText(int start, int end, const QString &text)
{
    if (!isWritable() || !item()->isEnabled())
        return;
    const int length = characterCount();
    const int first = std::clamp(start, 0, length);
    const int last = end < 0 ? length : std::clamp(end, first, length);
    QMetaObject::invokeMethod(item(), "deselect"); // what is selected would go too
    setCursorPosition(first);
    QInputMethodEvent event;
    event.setCommitString(text, 0, last - first);
    QCoreApplication::sendEvent(item(), &event);
}

void *AccessibleItem::interface_cast(QAccessible::InterfaceType type)
{
    if (auto *known = QAccessibleQuickItem::interface_cast(type))
        return known;
    if (type == QAccessible::ValueInterface && role() == QAccessible::ProgressBar)
        return static_cast<QAccessibleValueInterface *>(this);
    if (type == QAccessible::TextInterface && isLabel(role()))
        return static_cast<QAccessibleTextInterface *>(this);
    if (type == QAccessible::EditableTextInterface && isWritable())
        return static_cast<QAccessibleEditableTextInterface *>(this);
    return nullptr;
}

bool AccessibleItem::isWritable() const
{
    return role() == QAccessible::EditableText && !item()->property("readOnly").toBool();
}
