#include "SectionsForQml.h"

QList<int> SectionsForQml::all() const
{
    QList<int> numbers;
    for (const auto section : allProductSections)
        numbers.append(int(section));
    return numbers;
}

QString SectionsForQml::title(int section, AppLanguage language) const
{
    return ::title(ProductSection(section), language);
}

QString SectionsForQml::subtitle(int section, AppLanguage language) const
{
    return ::subtitle(ProductSection(section), language);
}

QString SectionsForQml::iconName(int section) const
{
    return ::iconName(ProductSection(section));
}
