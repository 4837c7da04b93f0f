#include "AppLanguage.h"

#include "Preferences.h"
#include "preferenceKeys.h"

using namespace Qt::StringLiterals;

QString rawValue(AppLanguage language)
{
    return language == AppLanguage::Russian ? u"ru"_s : u"en"_s;
}

std::optional<AppLanguage> appLanguageFromRawValue(QStringView raw)
{
    if (raw == u"en")
        return AppLanguage::English;
    if (raw == u"ru")
        return AppLanguage::Russian;
    return std::nullopt;
}

AppLanguage storedLanguage(const Preferences &preferences)
{
    const auto stored = preferences.get<QString>(PreferenceKeys::language()).value_or(QString());
    return appLanguageFromRawValue(stored).value_or(AppLanguage::English);
}

QString shortLabel(AppLanguage language)
{
    return language == AppLanguage::Russian ? u"RUS"_s : u"ENG"_s;
}
