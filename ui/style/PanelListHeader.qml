pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What stands over the rows of a PanelListPage: the blocks before the panel, and the panel's heading.
Item {
    id: header

    required property string title
    property string subtitle: ""
    default property alias blocks: column.data

    readonly property real panelTop: column.y + column.height + AppTheme.blockGap

    height: panelTop + AppTheme.panelPadding + heading.implicitHeight + AppTheme.headerGap

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: AppTheme.pageMargin
        spacing: AppTheme.blockGap
    }

    PanelHeading {
        id: heading

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: AppTheme.pageMargin + AppTheme.panelPadding
        y: header.panelTop + AppTheme.panelPadding
        title: header.title
        subtitle: header.subtitle
    }
}
