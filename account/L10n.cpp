#include "L10n.h"

#include "L10nTable.h"
#include "addedTexts.h"

#include <QHash>

namespace {

using Index = QHash<QStringView, const L10nRow *>;

const Index &index()
{
    static const Index built = [] {
        Index rows;
        for (const auto &row : l10nTable)
            rows.insert(row.key, &row);
        for (const auto &row : addedTexts())
            rows.insert(row.key, &row);
        return rows;
    }();
    return built;
}

} // namespace

QString L10n::t(QStringView key, AppLanguage language)
{
    const auto *row = index().value(key);
    if (!row)
        return key.toString();
    const auto text = language == AppLanguage::Russian ? row->russian : row->english;
    return (text.isEmpty() ? row->english : text).toString();
}
