#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the control group of a process says about the application it was started as.
struct CgroupApplication
{
    QStringList desktopIds; ///< what an "app-[LAUNCHER-]ID-RANDOM.scope" may mean by ID, likeliest first
    QString unit;           ///< path of that scope or service, equal for all its processes; else empty
    QString snapName;       ///< of a snap's scope, else empty

    bool operator==(const CgroupApplication &) const = default;
};

/// Reads the text of /proc/PID/cgroup.
CgroupApplication cgroupApplication(const QByteArray &text);
