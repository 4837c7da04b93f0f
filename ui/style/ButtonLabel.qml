pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// What stands in a button: perhaps an icon, and the text.
Item {
    id: label

    required property string text
    required property string iconName
    required property color color
    required property int weight

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight

    Row {
        id: row

        anchors.centerIn: parent
        spacing: AppTheme.iconGap

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            name: label.iconName
            visible: label.iconName !== ""
            color: label.color
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            visible: label.text !== ""
            text: label.text
            textFormat: Text.PlainText
            color: label.color
            font.pixelSize: 14
            font.weight: label.weight
            font.letterSpacing: -0.1
        }
    }
}
