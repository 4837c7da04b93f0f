#pragma once

#include <QString>
#include <QStringList>

class FileCalls;

/// Where desktops look up which program opens addresses of the scheme "quorvel". Absolute paths without a
/// slash at the end, the most important first.
struct SchemeHandlerPlaces
{
    QString program;           ///< this one's executable
    QString dataHome;          ///< $XDG_DATA_HOME, else ~/.local/share
    QStringList dataFolders;   ///< those of $XDG_DATA_DIRS
    QString config;            ///< $XDG_CONFIG_HOME, else ~/.config
    QStringList configFolders; ///< those of $XDG_CONFIG_DIRS
    QStringList desktops;      ///< the names in $XDG_CURRENT_DESKTOP, in lower case
};

/// The places of the running user.
SchemeHandlerPlaces schemeHandlerPlaces(const QString &program);

/// The desktop entry that the program writes for itself.
inline constexpr auto ownHandlerName = "quorvel-url-handler.desktop";

/// Sees to it that an address of the scheme "quorvel" opens this program. Where a package has installed the
/// program's menu entry, which says so, an entry that an earlier start wrote is removed; elsewhere it is
/// written, or brought up to date when the program has moved. Where nobody has decided who opens such
/// addresses, mimeapps.list of the user gets a line, and keeps all its other bytes. Needs no database of
/// desktop entries to be updated.
///
/// A file under that name that another program wrote is left alone, and so is what cannot be read; both are
/// logged, as is what cannot be written. Gives the paths of the files written or removed.
QStringList registerSchemeHandler(FileCalls &calls, const SchemeHandlerPlaces &places);
