pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// Whether one means of the desktop works, and a sentence on it.
ColumnLayout {
    id: line

    required property string label
    required property bool works
    required property string message
    property bool divided: false ///< whether a line stands above

    spacing: AppTheme.statusGap

    Rule {
        visible: line.divided
        color: AppTheme.hairline
    }

    RowLayout {
        Layout.fillWidth: true
        spacing: 16

        CaptionText {
            Layout.preferredWidth: 120
            Layout.maximumWidth: 120
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 3 // on the sentence's baseline
            color: AppTheme.textMuted
            text: line.label
        }

        Icon {
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 2
            Layout.rightMargin: -AppTheme.iconGap
            name: line.works ? "check-circle" : "blocked"
            color: line.works ? AppTheme.neonGreen : AppTheme.red
        }

        SelectableText {
            Layout.fillWidth: true
            Layout.maximumWidth: 680
            Layout.alignment: Qt.AlignTop
            text: line.message
            Accessible.description: line.label
        }

        Item {
            Layout.fillWidth: true
        }
    }
}
