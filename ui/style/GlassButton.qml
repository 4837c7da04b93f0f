pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The quiet button.
BlockButton {
    id: button

    labelColor: enabled ? AppTheme.textPrimary : Qt.rgba(1, 1, 1, 0.46)
    labelWeight: Font.DemiBold
    horizontalPadding: 14
    verticalPadding: 9

    background: GlassSurface {
        pressed: button.down
        focused: button.visualFocus
    }
}
