pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// An open task of the plan, to read.
ColumnLayout {
    id: task

    required property string title
    property bool divided: false ///< whether a task stands above

    spacing: 0

    Rule {
        visible: task.divided
        color: AppTheme.hairline
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.topMargin: 10
        Layout.bottomMargin: 10
        spacing: 10

        SurfaceItem {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 7
            implicitWidth: 6
            implicitHeight: 6
            radius: 3
            startColor: AppTheme.neonPurple
        }

        CalloutText {
            Layout.fillWidth: true
            text: task.title
        }
    }
}
