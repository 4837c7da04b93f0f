pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What stands under the rows of a PanelListPage, still in its panel.
Item {
    id: footer

    default property alias content: column.data

    readonly property real panelBottom: column.height + AppTheme.panelPadding

    height: panelBottom + AppTheme.pageMargin

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: AppTheme.pageMargin + AppTheme.panelPadding
        anchors.rightMargin: anchors.leftMargin
        spacing: 0
    }
}
