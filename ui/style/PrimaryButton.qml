pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// The one main action of a block.
Button {
    id: button

    property string iconName: ""

    readonly property color labelColor: enabled ? AppTheme.textOnGreen : AppTheme.faded(AppTheme.neonGreen, 0.62)

    horizontalPadding: 16
    verticalPadding: 11
    implicitHeight: AppTheme.controlHeight
    scale: down ? 0.985 : 1
    hoverEnabled: false

    Accessible.onPressAction: button.click()
    Keys.onReturnPressed: button.click()
    Keys.onEnterPressed: button.click()

    Behavior on scale {
        NumberAnimation {
            duration: 120
            easing.type: Easing.OutCubic
        }
    }

    background: Item {
        Surface {
            id: surface

            property real glow: !button.enabled ? 0 : button.down ? 0.25 : 0.38

            radius: 18
            startColor: AppTheme.faded(AppTheme.neonGreen, button.enabled ? 1 : 0.1)
            endColor: button.enabled ? AppTheme.greenLight : startColor
            middleColor: button.enabled ? Qt.rgba(0.425, 1, 0.66, 1) : startColor
            outlineColor: button.enabled ? Qt.rgba(1, 1, 1, 0.42) : AppTheme.faded(AppTheme.neonGreen, 0.2)
            shadowColor: AppTheme.faded(AppTheme.neonGreen, glow)
            shadowSigma: 22
            secondShadowColor: AppTheme.faded(AppTheme.neonGreen, glow * 0.24 / 0.38)
            secondShadowSigma: 18
            secondShadowOffset: Qt.point(0, 12)

            Behavior on glow {
                NumberAnimation {
                    duration: 120
                    easing.type: Easing.OutCubic
                }
            }
        }

        FocusRing {
            controlRadius: surface.radius
            visible: button.visualFocus
        }
    }

    contentItem: Item {
        implicitWidth: content.implicitWidth
        implicitHeight: 18

        Row {
            id: content

            anchors.centerIn: parent
            spacing: AppTheme.iconGap

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                name: button.iconName
                visible: button.iconName !== ""
                color: button.labelColor
            }

            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: button.text
                textFormat: Text.PlainText
                color: button.labelColor
                font.pixelSize: 14
                font.weight: Font.Bold
                font.letterSpacing: -0.1
            }
        }
    }
}
