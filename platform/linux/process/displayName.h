#pragma once

#include <QByteArray>
#include <QString>

/// The X display that a DISPLAY value means, without the screen: ":0.1" and "unix:0" are both ":0". Empty for
/// none.
QString displayName(QByteArray display);
