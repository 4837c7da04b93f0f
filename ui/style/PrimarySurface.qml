pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape of the main button.
Item {
    id: neon

    required property bool pressed
    required property bool focused

    property real glow: !enabled ? 0 : pressed ? 0.25 : 0.38

    Behavior on glow {
        NumberAnimation {
            duration: AppTheme.pressDuration
            easing.type: Easing.OutCubic
        }
    }

    Surface {
        radius: 18
        startColor: AppTheme.faded(AppTheme.neonGreen, neon.enabled ? 1 : 0.1)
        middleColor: neon.enabled ? AppTheme.greenMiddle : startColor
        endColor: neon.enabled ? AppTheme.greenLight : startColor
        outlineColor: neon.enabled ? Qt.rgba(1, 1, 1, 0.42) : AppTheme.faded(AppTheme.neonGreen, 0.2)
        shadowColor: AppTheme.faded(AppTheme.neonGreen, neon.glow)
        shadowSigma: 22
        secondShadowColor: AppTheme.faded(AppTheme.neonGreen, neon.glow * 0.24 / 0.38)
        secondShadowSigma: 18
        secondShadowOffset: Qt.point(0, 12)
    }

    FocusRing {
        controlRadius: 18
        visible: neon.focused
    }
}
