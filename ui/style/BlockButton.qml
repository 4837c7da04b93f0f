pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// What the buttons of a block have in common: how they are pressed, and an icon before the label.
Button {
    id: button

    required property color labelColor
    required property int labelWeight
    property string iconName: ""

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

    contentItem: ButtonLabel {
        text: button.text
        iconName: button.iconName
        color: button.labelColor
        weight: button.labelWeight
    }
}
