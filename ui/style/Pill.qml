pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// A short text in a tinted, outlined frame.
Item {
    id: pill

    required property string text
    required property color color
    property real fillOpacity: 0.15
    property real outlineOpacity: 1
    property int weight: Font.DemiBold

    implicitWidth: label.implicitWidth + 24
    implicitHeight: label.implicitHeight + 14

    Surface {
        radius: 14
        startColor: AppTheme.faded(pill.color, pill.fillOpacity)
        outlineColor: AppTheme.faded(pill.color, pill.outlineOpacity)
    }

    CaptionText {
        id: label

        anchors.centerIn: parent
        text: pill.text
        color: pill.color
        font.weight: pill.weight
        wrapMode: Text.NoWrap
    }
}
