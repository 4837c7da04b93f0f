pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape under every building block: a superellipse with a gradient, an outline and up to two shadows,
/// drawn in one pass. Without a graphics processor it is a plain rounded rectangle. Fills its parent.
Item {
    id: surface

    property real radius: 16
    property color baseColor: "transparent"
    property color startColor: "transparent" ///< gradient from the top leading to the bottom trailing corner
    property color middleColor: startColor
    property color endColor: startColor
    property real outlineWidth: 1
    property color outlineColor: "transparent"
    property color shadowColor: "transparent"
    property real shadowSigma: 0
    property point shadowOffset: Qt.point(0, 0)
    property color secondShadowColor: "transparent"
    property real secondShadowSigma: 0
    property point secondShadowOffset: Qt.point(0, 0)

    readonly property real shadowReach: Math.max(shadowSigma, secondShadowSigma) * 3
        + Math.max(Math.abs(shadowOffset.y), Math.abs(secondShadowOffset.y))

    anchors.fill: parent

    ShaderEffect {
        readonly property real radius: surface.radius
        readonly property size itemSize: Qt.size(width, height)
        readonly property real margin: Math.ceil(surface.shadowReach) + 1
        readonly property real outlineWidth: surface.outlineWidth
        readonly property color baseColor: surface.baseColor
        readonly property color startColor: surface.startColor
        readonly property color middleColor: surface.middleColor
        readonly property color endColor: surface.endColor
        readonly property color outlineColor: surface.outlineColor
        readonly property color shadowColor: surface.shadowColor
        readonly property color secondShadowColor: surface.secondShadowColor
        readonly property point shadowOffset: surface.shadowOffset
        readonly property point secondShadowOffset: surface.secondShadowOffset
        readonly property real shadowSigma: surface.shadowSigma
        readonly property real secondShadowSigma: surface.secondShadowSigma

        anchors.fill: parent
        anchors.margins: -margin
        visible: GraphicsInfo.api !== GraphicsInfo.Software
        fragmentShader: "qrc:/quorvel/shaders/surface.frag.qsb"
    }

    Rectangle {
        anchors.fill: parent
        visible: GraphicsInfo.api === GraphicsInfo.Software
        radius: surface.radius
        color: surface.baseColor.a > 0 ? surface.baseColor : surface.startColor
        border.width: surface.outlineWidth
        border.color: surface.outlineColor
    }
}
