pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A horizontal line between two parts of a block.
Rectangle {
    Layout.fillWidth: true
    implicitHeight: 1
    color: AppTheme.faded(AppTheme.glassStroke, 0.5)
}
