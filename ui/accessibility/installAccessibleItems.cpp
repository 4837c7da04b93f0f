#include "installAccessibleItems.h"

#include <QtGlobal>

// From this version on Qt's own items can be pressed and written to, and nothing private is needed.
#if QT_VERSION >= QT_VERSION_CHECK(6, 11, 0)

void installAccessibleItems()
{}

#else

#include "AccessibleItem.h"

#include <QQuickItem>
#include <QtQuick/private/qquickitem_p.h>

namespace {

/// Asked for each class of an object, from its own upwards, and before Qt is. So an item for whose class a
/// later Qt has something of its own, as for fields, is given that, and not this.
QAccessibleInterface *accessibleItem(const QString &className, QObject *object)
{
    if (className != QLatin1String("QQuickItem"))
        return nullptr;
    auto *item = qobject_cast<QQuickItem *>(object);
    const bool met = item && QQuickItemPrivate::get(item)->isAccessible;
    return met ? new AccessibleItem(item) : nullptr; // QAccessible owns it
}

} // namespace

void installAccessibleItems()
{
    QAccessible::installFactory(accessibleItem);
}

#endif
