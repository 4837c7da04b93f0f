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

public:
    QString browser() const { return value.browser; }
    bool connected() const { return value.state == BrowserCoverage::State::Connected; }

    BrowserCoverage value; ///< the only member: QML lays this struct over the extended one
};

struct BrowserCoverageListForQml
{
    Q_GADGET
    QML_FOREIGN(QList<BrowserCoverage>)
    QML_ANONYMOUS
    QML_SEQUENTIAL_CONTAINER(BrowserCoverage)
};

/// A card as a value of QML, to show and to give back to a command.
struct StudyCardForQml
{
    Q_GADGET
    QML_FOREIGN(StudyCard)
    QML_VALUE_TYPE(studyCard)
    QML_EXTENDED(StudyCardForQml)
    Q_PROPERTY(QString topic READ topic FINAL)
    Q_PROPERTY(bool hasTopic READ hasTopic FINAL)
    Q_PROPERTY(QString prompt READ prompt FINAL)
    Q_PROPERTY(qint64 correctCount READ correctCount FINAL)
    Q_PROPERTY(qint64 wrongCount READ wrongCount FINAL)

public:
    QString topic() const { return value.topic.value_or(QString()); }
    bool hasTopic() const { return !topic().isEmpty(); }
    QString prompt() const { return value.prompt; }
    qint64 correctCount() const { return value.correctCount; }
    qint64 wrongCount() const { return value.wrongCount; }

    StudyCard value; ///< the only member: QML lays this struct over the extended one
};

/// A task as a value of QML, to show and to give back to a command.
struct StudyTaskForQml
{
    Q_GADGET
    QML_FOREIGN(StudyTask)
    QML_VALUE_TYPE(studyTask)
    QML_EXTENDED(StudyTaskForQml)
    Q_PROPERTY(QString title READ title FINAL)
    Q_PROPERTY(bool isCompleted READ isCompleted FINAL)

public:
    QString title() const { return value.title; }
    bool isCompleted() const { return value.completedAt.has_value(); }

    StudyTask value; ///< the only member: QML lays this struct over the extended one
};

struct StudyCardModelForQml
{
    Q_GADGET
    QML_FOREIGN(StudyCardModel)
    QML_ANONYMOUS
};

struct StudyTaskModelForQml
{
    Q_GADGET
    QML_FOREIGN(StudyTaskModel)
    QML_ANONYMOUS
};

struct RecentEventModelForQml
{
    Q_GADGET
    QML_FOREIGN(RecentEventModel)
    QML_ANONYMOUS
};
