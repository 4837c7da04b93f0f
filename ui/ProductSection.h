#pragma once

#include "AppLanguage.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <array>
#include <optional>

namespace ProductSectionEnum {
Q_NAMESPACE
QML_NAMED_ELEMENT(ProductSection)
/// The parts of the working layout, in the order of the sidebar.
enum class ProductSection { Focus, Progress, Coach, Cards, Plan, Rules, Activity };
Q_ENUM_NS(ProductSection)
} // namespace ProductSectionEnum
using ProductSectionEnum::ProductSection;

inline constexpr std::array allProductSections{
    ProductSection::Focus, ProductSection::Progress, ProductSection::Coach,   ProductSection::Cards,
    ProductSection::Plan,  ProductSection::Rules,    ProductSection::Activity};

/// "focus", "progress" and so on: the section's identity as a text.
QString rawValue(ProductSection section);

/// The section of exactly that text.
std::optional<ProductSection> productSection(QStringView rawValue);

QString title(ProductSection section, AppLanguage language);
QString subtitle(ProductSection section, AppLanguage language);

/// The name of its drawing among the icons.
QString iconName(ProductSection section);
