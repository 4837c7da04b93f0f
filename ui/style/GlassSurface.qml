pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape of the quiet button.
Item {
    id: glass

    required property bool pressed
    required property bool focused

    Surface {
        radius: 16
        startColor: glass.enabled ? AppTheme.glassFill : AppTheme.tileFill
        outlineColor: glass.enabled ? AppTheme.faded(AppTheme.glassStroke, glass.pressed ? 0.95 : 0.65)
                                    : Qt.rgba(1, 1, 1, 0.08)
        shadowColor: AppTheme.faded(AppTheme.neonPurple, !glass.enabled ? 0 : glass.pressed ? 0.08 : 0.16)
        shadowSigma: 14
        shadowOffset: Qt.point(0, 8)

        Behavior on shadowColor {
            ColorAnimation {
                duration: AppTheme.pressDuration
                easing.type: Easing.OutCubic
            }
        }
        Behavior on outlineColor {
            ColorAnimation {
                duration: AppTheme.pressDuration
                easing.type: Easing.OutCubic
            }
        }
    }

    FocusRing {
        controlRadius: 16
        visible: glass.focused
    }
}
