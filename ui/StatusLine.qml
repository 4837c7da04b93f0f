pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One line of a label and its value.
RowLayout {
    id: line

    required property string label
    required property string value

    spacing: 16

    CaptionText {
        Layout.preferredWidth: 120
        Layout.maximumWidth: 120
        Layout.alignment: Qt.AlignTop
        Layout.topMargin: 12 // on the value's baseline
        Layout.bottomMargin: 9
        color: AppTheme.textMuted
        text: line.label
    }

    CalloutText {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignTop
        Layout.topMargin: 9
        Layout.bottomMargin: 9
        text: line.value
        Accessible.description: line.label
    }
}
