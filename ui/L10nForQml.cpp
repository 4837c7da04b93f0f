#include "L10nForQml.h"

#include "L10n.h"
#include "formatDuration.h"

QString L10nForQml::t(const QString &key, AppLanguage language) const
{
    return L10n::t(key, language);
}

QString L10nForQml::shortLabel(AppLanguage language) const
{
    return ::shortLabel(language);
}

QString L10nForQml::reason(const Availability &availability, AppLanguage language) const
{
    return inLanguage(language, availability.reasonEnglish, availability.reasonRussian);
}

QString L10nForQml::advice(const BrowserCoverage &coverage, AppLanguage language) const
{
    return inLanguage(language, coverage.adviceEnglish, coverage.adviceRussian);
}

QString L10nForQml::duration(qint64 seconds) const
{
    return formatDuration(seconds);
}
