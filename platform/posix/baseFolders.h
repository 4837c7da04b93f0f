#pragma once

#include <QString>

/// The user's folders by the XDG base directory specification. A variable that is unset, empty or not an
/// absolute path counts as not set. The home folder is $HOME, or where that is no absolute path the one of
/// the user database, or at last "/". Nothing is created; no path ends in "/".

/// Where the record files are: $XDG_DATA_HOME/Quorvel, by default ~/.local/share/Quorvel.
QString dataFolder();

/// Where the preferences are: $XDG_CONFIG_HOME/quorvel, by default ~/.config/quorvel.
QString preferencesFolder();
