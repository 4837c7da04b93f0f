#pragma once

#include <QString>
#include <QStringList>

/// The user's folders by the XDG base directory specification. What a variable names that is no absolute path
/// does not count; a variable that is unset, empty or names nothing that counts stands for its default.
/// Nothing is created; no path ends in "/", so that the root itself is the empty text.

/// $HOME, or where that is no absolute path the home folder of the user database, or at last the root.
QString homeFolder();

QString dataHome();           ///< $XDG_DATA_HOME, by default ~/.local/share
QStringList dataFolders();    ///< those of $XDG_DATA_DIRS, the most important first
QString configHome();         ///< $XDG_CONFIG_HOME, by default ~/.config
QStringList configFolders();  ///< those of $XDG_CONFIG_DIRS, the most important first
QStringList programFolders(); ///< those of $PATH

/// Where the record files are: the folder "Quorvel" in dataHome().
QString dataFolder();

/// Where the preferences are: the folder "quorvel" in configHome().
QString preferencesFolder();
