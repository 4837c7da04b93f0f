pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What stands in a list that has nothing yet.
ColumnLayout {
    id: emptyState

    required property string iconName
    required property string title
    property string message: ""

    spacing: 0

    Icon {
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: 22
        name: emptyState.iconName
        size: 36
        color: Qt.rgba(1, 1, 1, 0.5)
    }

    HeadlineText {
        Layout.fillWidth: true
        Layout.topMargin: 10
        Layout.bottomMargin: message.visible ? 0 : 26
        horizontalAlignment: Text.AlignHCenter
        text: emptyState.title
    }

    CaptionText {
        id: message

        Layout.fillWidth: true
        Layout.topMargin: 3
        Layout.bottomMargin: 26
        horizontalAlignment: Text.AlignHCenter
        color: AppTheme.textMuted
        visible: text !== ""
        text: emptyState.message
    }
}
