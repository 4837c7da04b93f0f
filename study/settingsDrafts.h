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
