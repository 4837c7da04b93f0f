pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// A short value behind its icon.
Row {
    id: line

    required property string iconName
    required property string text
    property string description: "" ///< what it is, for those who do not see the icon

    spacing: AppTheme.iconGap

    Icon {
        anchors.verticalCenter: parent.verticalCenter
        name: line.iconName
        size: 15
    }

    CaptionText {
        anchors.verticalCenter: parent.verticalCenter
        wrapMode: Text.NoWrap
        text: line.text
        Accessible.description: line.description
    }
}
