#pragma once

#include <QQuickView>
#include <QStringList>

/// What is wrong with where things are in a window, one sentence each: texts that are cut off or elided,
/// texts and controls that overlap, what leaves the panel or button that it is in, and what is beside the
/// window. What is merely scrolled out of sight is right.
QStringList layoutFaults(const QQuickView &window);
