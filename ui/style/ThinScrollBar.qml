pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A thin scroller; there only while there is something to scroll.
ScrollBar {
    id: bar

    policy: size < 1 ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
    minimumSize: 0.08
    padding: 3

    Accessible.ignored: true // who cannot see the page does not scroll it

    contentItem: SurfaceItem {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        startColor: Qt.rgba(1, 1, 1, bar.pressed ? 0.4 : 0.22)
    }
}
