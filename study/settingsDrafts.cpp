#include "settingsDrafts.h"

SettingsDrafts draftsFrom(const QuorvelConfig &config)
{
    return {
        .studyMinutesText = QString::number(config.studyMinutes),
        .breakMinutesText = QString::number(config.breakMinutes),
        .maxIdleSecondsText = QString::number(config.maxIdleSeconds),
        .requiredProofsText = QString::number(config.requiredProofsToUnlock),
        .blockedAppsText = config.blockedApps.join(u'\n'),
        .blockedDomainsText = config.blockedDomains.join(u'\n'),
        .allowedStudyDomainsText = config.allowedStudyDomains.join(u'\n'),
        .allowedStudyAppsText = config.allowedStudyApps.join(u'\n'),
    };
}
