pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// One section in the sidebar. Which one is shown is the owner's.
RadioButton {
    id: button

    required property string iconName
    required property bool current

    readonly property color labelColor: current ? AppTheme.neonGreen : AppTheme.faded(AppTheme.textPrimary, 0.86)

    horizontalPadding: 10
    verticalPadding: 9
    implicitHeight: 38
    checked: current
    indicator: null
    hoverEnabled: false
    focusPolicy: Qt.StrongFocus

    Accessible.name: text
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    background: Item {
        Surface {
            visible: button.current
            radius: 18
            startColor: AppTheme.faded(AppTheme.neonPurple, 0.18)
            outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.75)
            shadowColor: AppTheme.faded(AppTheme.neonPurple, 0.2)
            shadowSigma: 12
            shadowOffset: Qt.point(0, 6)
        }

        FocusRing {
            anchors.margins: -2
            controlRadius: 16
            visible: button.visualFocus
        }
    }

    contentItem: Row {
        spacing: 10

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            name: button.iconName
            size: 18
            color: button.labelColor
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            textFormat: Text.PlainText
            color: button.labelColor
            font.pixelSize: 14
            font.weight: button.current ? Font.DemiBold : Font.Normal
            font.letterSpacing: -0.1
        }
    }
}
