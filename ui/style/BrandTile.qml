pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The product's sign on a rounded tile.
Item {
    id: tile

    property int side: 46
    property int iconSize: 22
    property alias surface: shape

    implicitWidth: side
    implicitHeight: side

    Surface {
        id: shape

        radius: 18
        startColor: AppTheme.neonPurple
        middleColor: "#6C5BD6"
        endColor: "#2FAE82"
        outlineColor: Qt.rgba(1, 1, 1, 0.28)
        shadowColor: AppTheme.faded(AppTheme.neonPurple, 0.45)
        shadowSigma: 18
    }

    Icon {
        anchors.centerIn: parent
        name: "brand"
        size: tile.iconSize
        color: "white"
    }
}
