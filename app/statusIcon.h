#pragma once

#include "QuorvelController.h"

#include <QIcon>

/// What the status icon shows; two equal looks give the same picture.
struct StatusLook
{
    QuorvelController::Mode mode = QuorvelController::Mode::Ready;
    QString figure; ///< minutes left, or hours as "2h"; empty while no clock runs

    bool operator==(const StatusLook &) const = default;
};

/// The look of a mode. A started minute counts, so that a running clock never shows 0 before its end; from
/// 100 minutes on the figure is in started hours.
StatusLook statusLook(QuorvelController::Mode mode, qint64 studyRemaining, qint64 breakRemaining);

/// The icon in the sizes that panels use. Needs a QGuiApplication.
QIcon drawStatusIcon(const StatusLook &look);
