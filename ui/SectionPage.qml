pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The page of a section: the command bar, and under it the section's workspace.
PageScroller {
    id: scroller

    required property QuorvelController controller
    required property int section
    /// The room between the margins. Blocks that stand otherwise in little room go by this: a layout of Qt 6.4
    /// misses a change that comes while it is being laid out.
    readonly property real room: width - 2 * AppTheme.pageMargin
    readonly property bool narrow: room < AppTheme.narrowContent
    default property alias workspace: column.data

    focus: true
    content: page

    Item {
        id: page

        width: scroller.width
        implicitHeight: column.implicitHeight + 2 * AppTheme.pageMargin

        ColumnLayout {
            id: column

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: AppTheme.pageMargin
            spacing: AppTheme.titleGap

            CommandBar {
                Layout.fillWidth: true
                controller: scroller.controller
                section: scroller.section
                room: scroller.room
            }
        }
    }
}
