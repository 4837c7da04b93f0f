#pragma once

#include <QStringList>

/// The list with the first of each exact string kept and later repeats dropped, in the same order.
QStringList removingDuplicates(const QStringList &list);
