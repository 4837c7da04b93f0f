#pragma once

#include <QObject>
#include <QString>

#include <optional>

class Preferences;

namespace AppLanguageEnum {
Q_NAMESPACE
/// The languages of the interface, in the order in which a picker shows them.
enum class AppLanguage { English, Russian };
Q_ENUM_NS(AppLanguage)
} // namespace AppLanguageEnum
using AppLanguageEnum::AppLanguage;

/// "en" or "ru": the form in which a language is stored.
QString rawValue(AppLanguage language);

/// The language stored as exactly `raw`; none for any other text.
std::optional<AppLanguage> appLanguageFromRawValue(QStringView raw);

/// The language that the preferences hold; English where they hold none.
AppLanguage storedLanguage(const Preferences &preferences);

/// "ENG" or "RUS": the label of a language in the picker, the same in both languages.
QString shortLabel(AppLanguage language);

/// One of two texts that are written side by side at their point of use.
inline QString inLanguage(AppLanguage language, const QString &english, const QString &russian)
{
    return language == AppLanguage::Russian ? russian : english;
}
