pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape of a row in a list, and of a card that is asked.
Surface {
    radius: 18
    startColor: AppTheme.tileFill
    outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.65)
}
