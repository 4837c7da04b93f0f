#pragma once

#include "AppLanguage.h"
#include "Availability.h"
#include "BrowserCoverage.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

/// The text table for QML. The language is an argument, so that a binding that names the controller's
/// language follows it.
class L10nForQml : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(L10n)
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The text of `key`; the key itself where there is none.
    Q_INVOKABLE QString t(const QString &key, AppLanguageEnum::AppLanguage language) const;

    /// "ENG" or "RUS", the same in both languages.
    Q_INVOKABLE QString shortLabel(AppLanguageEnum::AppLanguage language) const;

    /// Seconds as a clock shows them, "25:00" or "1:05:09".
    Q_INVOKABLE QString duration(qint64 seconds) const;

    /// Why a means does not work; empty while it does.
    Q_INVOKABLE QString reason(const Availability &availability, AppLanguageEnum::AppLanguage language) const;

    /// What there is to say of a browser, and what its user can do.
    Q_INVOKABLE QString advice(const BrowserCoverage &coverage, AppLanguageEnum::AppLanguage language) const;
};
