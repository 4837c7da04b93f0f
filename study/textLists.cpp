#include "textLists.h"

#include <QSet>

QStringList removingDuplicates(const QStringList &list)
{
    QSet<QString> seen;
    QStringList unique;
    for (const auto &entry : list) {
        if (seen.contains(entry))
            continue;
        seen.insert(entry);
        unique.append(entry);
    }
    return unique;
}
