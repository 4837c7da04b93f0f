#include "ProductSection.h"

#include "L10n.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

struct SectionRow
{
    QStringView rawValue;
    QStringView titleKey;
    QStringView subtitleKey;
    QStringView icon;
};

/// In the order of the enumeration.
constexpr std::array<SectionRow, allProductSections.size()> sectionRows{{
    {u"focus", u"focus_title", u"focus_subtitle", u"scope"},
    {u"progress", u"progress_title", u"progress_subtitle", u"run"},
    {u"coach", u"ai_coach", u"coach_subtitle", u"sparkles"},
    {u"cards", u"cards_title", u"cards_subtitle", u"cards"},
    {u"plan", u"plan_title", u"plan_subtitle", u"checklist"},
    {u"rules", u"rules_title", u"rules_subtitle", u"sliders"},
    {u"activity", u"activity_title", u"activity_subtitle", u"pulse"},
}};

const SectionRow &rowOf(ProductSection section)
{
    return sectionRows.at(size_t(section));
}

} // namespace

QString rawValue(ProductSection section)
{
    return rowOf(section).rawValue.toString();
}

std::optional<ProductSection> productSection(QStringView rawValue)
{
    const auto found = std::find_if(sectionRows.begin(), sectionRows.end(),
                                    [rawValue](const SectionRow &row) { return row.rawValue == rawValue; });
    if (found == sectionRows.end())
        return std::nullopt;
    return ProductSection(found - sectionRows.begin());
}

QString title(ProductSection section, AppLanguage language)
{
    return L10n::t(rowOf(section).titleKey, language);
}

QString subtitle(ProductSection section, AppLanguage language)
{
    return L10n::t(rowOf(section).subtitleKey, language);
}

QString iconName(ProductSection section)
{
    return rowOf(section).icon.toString();
}
