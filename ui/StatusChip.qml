pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One thing that the program sees of the desktop.
Item {
    id: chip

    required property string iconName
    required property string title
    required property string value
    property string shown ///< the value, as long as the window can be seen

    implicitHeight: row.implicitHeight + 24

    Binding on shown {
        when: AppTheme.seen
        value: chip.value
        restoreMode: Binding.RestoreNone
    }

    Surface {
        radius: 18
        startColor: AppTheme.tileFill
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.65)
    }

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 12
        spacing: 10

        Icon {
            Layout.alignment: Qt.AlignTop
            name: chip.iconName
            color: AppTheme.quietIcon
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            CaptionText {
                Layout.fillWidth: true
                color: AppTheme.textMuted
                text: chip.title
            }

            CalloutText {
                Layout.fillWidth: true
                font.weight: Font.DemiBold
                text: chip.shown
                Accessible.description: chip.title
            }
        }
    }
}
