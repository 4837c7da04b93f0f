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
