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

    Accessible.name: text
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    Behavior on scale {
        NumberAnimation {
            duration: AppTheme.pressDuration
            easing.type: Easing.OutCubic
        }
    }

    background: GlassSurface {
        pressed: button.down
        focused: button.visualFocus
    }

    contentItem: ButtonLabel {
        text: button.text
        iconName: button.iconName
        color: button.labelColor
        weight: Font.DemiBold
    }
}
