pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// On or off.
Switch {
    id: control

    required property string accessibleName

    function flip(): void {
        toggle();
        toggled();
    }

    implicitWidth: 40
    implicitHeight: 24
    padding: 0
    hoverEnabled: false

    Accessible.name: accessibleName
    Keys.onReturnPressed: flip()
    Keys.onEnterPressed: flip()

    contentItem: null
    background: null
    indicator: Item {
        implicitWidth: 40
        implicitHeight: 24

        Rectangle {
            anchors.fill: parent
            radius: 12
            color: control.checked ? AppTheme.neonGreen : Qt.rgba(1, 1, 1, 0.14)
            border.width: control.checked ? 0 : 1
            border.color: AppTheme.faded(AppTheme.glassStroke, 0.65)
        }

        Rectangle {
            x: control.checked ? parent.width - width - 3 : 3
            anchors.verticalCenter: parent.verticalCenter
            width: 18
            height: 18
            radius: 9
            color: control.checked ? AppTheme.textOnGreen : AppTheme.textPrimary
        }

        FocusRing {
            controlRadius: 12
            visible: control.visualFocus
        }
    }
}
