pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// How much of a session is over.
Item {
    id: bar

    required property real progress ///< 0 to 1
    required property color color
    required property string accessibleName

    // By these names assistive tools read how far it is.
    readonly property real value: progress
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1

    implicitHeight: 6

    Accessible.role: Accessible.ProgressBar
    Accessible.name: accessibleName
    Accessible.description: Math.round(progress * 100) + "%"

    property real shown ///< the progress, as long as the window can be seen

    Binding on shown {
        when: AppTheme.seen
        value: bar.progress
        restoreMode: Binding.RestoreNone
    }

    Surface {
        radius: height / 2
        startColor: Qt.rgba(1, 1, 1, 0.14)
    }

    SurfaceItem {
        width: parent.width * bar.shown
        height: parent.height
        radius: height / 2
        startColor: bar.color
        restless: true
    }
}
