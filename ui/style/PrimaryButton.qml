pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The one main action of a block.
BlockButton {
    id: button

    labelColor: enabled ? AppTheme.textOnGreen : AppTheme.faded(AppTheme.neonGreen, 0.62)
    labelWeight: Font.Bold
    horizontalPadding: 16
    verticalPadding: 11

    background: PrimarySurface {
        pressed: button.down
        focused: button.visualFocus
    }
}
