#pragma once

#include <QString>

/// A name that a program gave itself, fit to be shown: one line, no control characters, at most 256
/// characters.
QString shownName(QString name);
