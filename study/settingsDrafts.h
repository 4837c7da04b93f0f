#pragma once

#include "QuorvelConfig.h"

#include <QString>

/// The settings as a person edits them: numbers as plain decimal text, lists as one entry a line.
struct SettingsDrafts
{
    QString studyMinutesText;
    QString breakMinutesText;
    QString maxIdleSecondsText;
    QString requiredProofsText;
    QString blockedAppsText;
    QString blockedDomainsText;
    QString allowedStudyDomainsText;
    QString allowedStudyAppsText;

    bool operator==(const SettingsDrafts &) const = default;
};

SettingsDrafts draftsFrom(const QuorvelConfig &config);

/// The settings that the drafts ask for, on top of those in force: a number that is none keeps the one in
/// force, and every number is pulled into its range (study and break 1 to 240 minutes, idle 15 to 3,600
/// seconds, proofs 0 to 20). The preset version is kept.
QuorvelConfig configFrom(const SettingsDrafts &drafts, QuorvelConfig config);

/// One entry a line: trimmed, without empty ones and exact repeats, in the same order. Every line break of
/// Unicode ends a line.
QStringList parseEditorLines(const QString &text);
