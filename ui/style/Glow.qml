pragma ComponentBehavior: Bound

import QtQuick

/// A soft light that fades out to the item's edges; nothing without a graphics processor.
ShaderEffect {
    required property color glowColor

    visible: GraphicsInfo.api !== GraphicsInfo.Software
    fragmentShader: "qrc:/quorvel/shaders/glow.frag.qsb"
}
