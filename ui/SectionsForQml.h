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
    Q_PROPERTY(QList<int> open READ open CONSTANT FINAL)

public:
    using QObject::QObject;

    /// The sections that can be opened so far, in the order of the sidebar, each as its number.
    QList<int> open() const;

    Q_INVOKABLE QString title(int section, AppLanguageEnum::AppLanguage language) const;
    Q_INVOKABLE QString subtitle(int section, AppLanguageEnum::AppLanguage language) const;
    Q_INVOKABLE QString iconName(int section) const;
};
