#pragma once

#include "AccessMode.h"
#include "AppLanguage.h"
#include "DesktopSupport.h"
#include "QuorvelController.h"

#include <QtQml/qqml.h>

// The types of the other folders as QML knows them. They are registered here so that those folders need no
// QML.

struct QuorvelControllerForQml
{
    Q_GADGET
    QML_FOREIGN(QuorvelController)
    QML_NAMED_ELEMENT(QuorvelController)
    QML_UNCREATABLE("The program has one controller; it is given to the root view.")
};

struct DesktopSupportForQml
{
    Q_GADGET
    QML_FOREIGN(DesktopSupport)
    QML_NAMED_ELEMENT(DesktopSupport)
    QML_UNCREATABLE("The program has one; it is given to the root view.")
};

namespace AppLanguageForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(AppLanguageEnum)
QML_NAMED_ELEMENT(AppLanguage)
} // namespace AppLanguageForQml

namespace AccessModeForQml {
Q_NAMESPACE
QML_FOREIGN_NAMESPACE(AccessModeEnum)
QML_NAMED_ELEMENT(AccessMode)
} // namespace AccessModeForQml

/// Availability as a value of QML, which can read its properties only through an extension.
struct AvailabilityForQml
{
    Q_GADGET
    QML_FOREIGN(Availability)
    QML_VALUE_TYPE(availability)
    QML_EXTENDED(AvailabilityForQml)
    Q_PROPERTY(bool works READ works FINAL)

public:
    bool works() const { return value.works; }

    Availability value; ///< the only member: QML lays this struct over the extended one
};

/// What is known of one browser, as a value of QML. L10n.advice() gives its sentence.
struct BrowserCoverageForQml
{
    Q_GADGET
    QML_FOREIGN(BrowserCoverage)
    QML_VALUE_TYPE(browserCoverage)
    QML_EXTENDED(BrowserCoverageForQml)
    Q_PROPERTY(QString browser READ browser FINAL)
    Q_PROPERTY(bool connected READ connected FINAL)
    Q_PROPERTY(bool canWork READ canWork FINAL)

public:
    QString browser() const { return value.browser; }
    bool connected() const { return value.state == BrowserCoverage::State::Connected; }
    bool canWork() const { return value.state != BrowserCoverage::State::CannotWork; }

    BrowserCoverage value; ///< the only member: QML lays this struct over the extended one
};

struct BrowserCoverageListForQml
{
    Q_GADGET
    QML_FOREIGN(QList<BrowserCoverage>)
    QML_ANONYMOUS
    QML_SEQUENTIAL_CONTAINER(BrowserCoverage)
};
