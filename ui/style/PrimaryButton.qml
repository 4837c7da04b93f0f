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

    Accessible.name: text
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    Behavior on scale {
        NumberAnimation {
            duration: AppTheme.pressDuration
            easing.type: Easing.OutCubic
        }
    }

    background: PrimarySurface {
        pressed: button.down
        focused: button.visualFocus
    }

    contentItem: ButtonLabel {
        text: button.text
        iconName: button.iconName
        color: button.labelColor
        weight: Font.Bold
    }
}
