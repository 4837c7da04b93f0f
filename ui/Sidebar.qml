pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The column at the window's leading edge.
FocusScope {
    id: sidebar

    required property QuorvelController controller
    required property int selection

    signal chosen(int section)

    implicitWidth: AppTheme.sidebarWidth

    Surface {
        anchors.margins: -4 // its soft edge is out of sight
        anchors.rightMargin: 0
        radius: 0
        outlineWidth: 0
        startColor: AppTheme.sidebarMaterial
    }

    Rectangle {
        anchors.right: parent.right
        width: 1
        height: parent.height
        color: AppTheme.faded(AppTheme.glassStroke, 0.45)
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 22
        spacing: 16

        BrandBlock {
            Layout.fillWidth: true
            controller: sidebar.controller
        }

        LanguageSwitch {
            Layout.fillWidth: true
            controller: sidebar.controller
        }

        SectionList {
            Layout.fillWidth: true
            Layout.fillHeight: true
            controller: sidebar.controller
            selection: sidebar.selection
            onChosen: section => sidebar.chosen(section)
        }

        AccountStatus {
            Layout.fillWidth: true
            controller: sidebar.controller
        }

        SidebarStatus {
            Layout.fillWidth: true
            controller: sidebar.controller
        }
    }
}
