pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// The quiet button.
Button {
    id: button

    property string iconName: ""

    readonly property color labelColor: enabled ? AppTheme.textPrimary : Qt.rgba(1, 1, 1, 0.46)

    horizontalPadding: 14
    verticalPadding: 9
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

            radius: 16
            startColor: button.enabled ? AppTheme.glassFill : AppTheme.tileFill
            outlineColor: button.enabled ? AppTheme.faded(AppTheme.glassStroke, button.down ? 0.95 : 0.65)
                                         : Qt.rgba(1, 1, 1, 0.08)
            shadowColor: AppTheme.faded(AppTheme.neonPurple, button.enabled ? (button.down ? 0.08 : 0.16) : 0)
            shadowSigma: 14
            shadowOffset: Qt.point(0, 8)

            Behavior on shadowColor {
                ColorAnimation {
                    duration: 120
                    easing.type: Easing.OutCubic
                }
            }
            Behavior on outlineColor {
                ColorAnimation {
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
        implicitHeight: 22

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
                font.weight: Font.DemiBold
                font.letterSpacing: -0.1
            }
        }
    }
}
