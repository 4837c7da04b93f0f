#pragma once

#include <QString>
#include <QStringList>

/// The alternatives of an expected answer, "derivative|slope" say, in their normalized form and order; empty
/// ones are left out.
QStringList acceptedAnswers(const QString &expectedAnswer);

/// Whether a typed answer is one of the alternatives: in normalized form, or as a decimal number less than
/// 1e-6 away. Empty answers never are. `accepted` is acceptedAnswers(expectedAnswer), which the caller may
/// have kept.
bool acceptsAnswer(const QString &expectedAnswer, const QStringList &accepted, const QString &answer);
