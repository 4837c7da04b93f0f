pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The glass of a panel. Where it goes is the owner's.
Item {
    Surface {
        radius: 24
        baseColor: AppTheme.panelMaterial
        startColor: AppTheme.faded(AppTheme.neonPurple, 0.1)
        middleColor: AppTheme.faded(AppTheme.neonGreen, 0.045)
        endColor: "transparent"
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.78)
        shadowColor: Qt.rgba(0, 0, 0, 0.28)
        shadowSigma: 24
        shadowOffset: Qt.point(0, 18)
        secondShadowColor: AppTheme.faded(AppTheme.neonPurple, 0.08)
        secondShadowSigma: 30
    }
}
