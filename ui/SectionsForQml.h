#pragma once

#include "ProductSection.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

/// What QML asks of a section.
class SectionsForQml : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Sections)
    QML_SINGLETON
    Q_PROPERTY(QList<int> all READ all CONSTANT FINAL)

public:
    using QObject::QObject;

    /// All sections in the order of the sidebar, each as its number.
    QList<int> all() const;

    Q_INVOKABLE QString title(int section, AppLanguageEnum::AppLanguage language) const;
    Q_INVOKABLE QString subtitle(int section, AppLanguageEnum::AppLanguage language) const;
    Q_INVOKABLE QString iconName(int section) const;
};
