pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// All that lies under texts and icons and is mostly still: the background and the shapes at rest. It is one
/// opaque picture, drawn anew only when something of it changes.
Item {
    id: ground

    property bool started: false ///< the first frame need not wait for a picture to keep
    readonly property bool keepsPicture: started && GraphicsInfo.api !== GraphicsInfo.Software

    Timer {
        interval: 400
        running: true
        onTriggered: ground.started = true
    }

    Item {
        id: layers

        anchors.fill: parent

        AppBackground {
            anchors.fill: parent
        }

        SurfacePlate {
            anchors.fill: parent
        }
    }

    ShaderEffectSource {
        id: picture

        anchors.fill: parent
        visible: false
        sourceItem: ground.keepsPicture ? layers : null
        hideSource: true
        smooth: false
    }

    ShaderEffect {
        readonly property ShaderEffectSource source: picture

        anchors.fill: parent
        visible: ground.keepsPicture
        blending: false
    }
}
