pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The controller's mode.
Pill {
    required property QuorvelController controller

    text: controller.modeText
    color: AppTheme.accent(controller.mode)
}
