#pragma once

#include <QAccessible>

/// `node` and what is below it, without what is invisible, in the order of assistive tools.
inline QList<QAccessibleInterface *> visibleNodes(QAccessibleInterface *node)
{
    if (!node || node->state().invisible)
        return {};
    QList<QAccessibleInterface *> found = {node};
    for (int index = 0; index < node->childCount(); ++index)
        found += visibleNodes(node->child(index));
    return found;
}
