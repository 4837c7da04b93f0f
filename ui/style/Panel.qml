pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The card that groups a block: a title, perhaps a subtitle, and what is put in it, in a column.
Item {
    id: panel

    property string title: ""
    property string subtitle: ""
    property int contentSpacing: 0
    default property alias content: column.data

    implicitWidth: frame.implicitWidth + 2 * AppTheme.panelPadding
    implicitHeight: frame.implicitHeight + 2 * AppTheme.panelPadding

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    PanelSurface {
        anchors.fill: parent
    }

    ColumnLayout {
        id: frame

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: AppTheme.panelPadding
        spacing: AppTheme.headerGap

        PanelHeading {
            Layout.fillWidth: true
            visible: panel.title !== ""
            title: panel.title
            subtitle: panel.subtitle
        }

        ColumnLayout {
            id: column

            Layout.fillWidth: true
            spacing: panel.contentSpacing
        }
    }
}
