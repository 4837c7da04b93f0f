pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The ring around the button that the keyboard would press.
Surface {
    required property real controlRadius

    anchors.margins: -4 // 2 wide, 2 outside
    radius: controlRadius + 4
    outlineWidth: 2
    outlineColor: AppTheme.faded(AppTheme.neonGreen, 0.75)
}
