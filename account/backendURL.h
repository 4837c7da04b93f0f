#pragma once

#include "Preferences.h"

#include <QUrl>

/// The address of a path of the backend: the text of the preference "backendBaseURL", else of the built-in
/// address, with `path` put after it as it is. A text that is no URL ends the program.
QUrl backendURL(const Preferences &preferences, const QString &path);
