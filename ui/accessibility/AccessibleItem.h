#pragma once

#include <QAccessible>
#include <QtQuick/private/qaccessiblequickitem_p.h>

/// An item of the window as assistive tools meet it: Qt's own, with what Qt 6.4 leaves out or gets wrong.
///
/// - "Press" and "Toggle" do to a button what a click does; Qt does nothing, or changes `checked` behind the
///   button's back.
/// - A field and a text area can be written to, as if somebody typed; Qt lets them only be read.
/// - A control that is disabled says so, and cannot be pressed; Qt says nothing.
/// - A text that cannot have the keyboard does not claim that it can; its content can be read; lines end with
///   line feeds.
/// - A progress bar tells how far it is, by its properties `value`, `minimumValue` and `maximumValue`.
class AccessibleItem : public QAccessibleQuickItem, public QAccessibleEditableTextInterface
{
public:
    using QAccessibleQuickItem::text;

    explicit AccessibleItem(QQuickItem *item);

    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text kind, const QString &text) override;
    void doAction(const QString &name) override;

    QString text(int start, int end) const override;
    void addSelection(int start, int end) override;
    void removeSelection(int number) override;
    void setSelection(int number, int start, int end) override;

    void deleteText(int start, int end) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int start, int end, const QString &text) override;

protected:
    void *interface_cast(QAccessible::InterfaceType type) override;

private:
    bool isWritable() const;
};
