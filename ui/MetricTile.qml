pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One figure with its title and icon.
Item {
    id: tile

    required property string iconName
    required property string title
    required property string value
    property string shown ///< the value, as long as the window can be seen

    implicitHeight: row.implicitHeight + 28

    Binding on shown {
        when: AppTheme.seen
        value: tile.value
        restoreMode: Binding.RestoreNone
    }

    Surface {
        radius: 14
        startColor: AppTheme.tileFill
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.65)
    }

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.margins: 14
        spacing: 12

        Item {
            Layout.preferredWidth: 30
            Layout.preferredHeight: 30

            Surface {
                radius: 10
                startColor: AppTheme.faded(AppTheme.neonPurple, 0.14)
                outlineWidth: 0
            }

            Icon {
                anchors.centerIn: parent
                name: tile.iconName
                size: 17
            }
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0

            CaptionText {
                Layout.fillWidth: true
                color: AppTheme.textMuted
                text: tile.title
            }

            Title3Text {
                Layout.fillWidth: true
                text: tile.shown
                Accessible.description: tile.title
            }
        }
    }
}
