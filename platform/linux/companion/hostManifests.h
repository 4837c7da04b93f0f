#pragma once

#include <QString>
#include <QStringList>

class FileCalls;

/// Where the manifests go that tell browsers of the relay. Absolute paths without a slash at the end.
struct HostManifestPlaces
{
    QString home;
    QString config;             ///< $XDG_CONFIG_HOME, else ~/.config
    QString relay;              ///< the relay's executable
    QStringList programFolders; ///< those of $PATH
};

/// The places of the running user.
HostManifestPlaces hostManifestPlaces(const QString &relay);

/// Writes the manifest for each browser that this user has: one whose folder is there or whose program is
/// installed. A file that is right already is left alone; a symbolic link in the way is replaced. What cannot
/// be written is logged. Nothing is written while the relay is not there. Gives the paths of the files
/// written.
QStringList writeHostManifests(FileCalls &calls, const HostManifestPlaces &places);
