pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The near-black background with its purple and its green light.
Item {
    id: background

    ShaderEffect {
        readonly property size itemSize: Qt.size(width, height)
        readonly property color startColor: AppTheme.bgTop
        readonly property color middleColor: AppTheme.bgMiddle
        readonly property color endColor: AppTheme.bgBottom
        readonly property color leadingGlow: AppTheme.faded(AppTheme.neonPurple, 0.34)
        readonly property color trailingGlow: AppTheme.faded(AppTheme.neonGreen, 0.2)
        readonly property point leadingRadii: Qt.point(30, 520)
        readonly property point trailingRadii: Qt.point(40, 600)
        readonly property real bottomShade: 0.22

        anchors.fill: parent
        visible: GraphicsInfo.api !== GraphicsInfo.Software
        blending: false
        layer.enabled: true
        fragmentShader: "qrc:/quorvel/shaders/background.frag.qsb"
    }

    Rectangle {
        anchors.fill: parent
        visible: GraphicsInfo.api === GraphicsInfo.Software

        gradient: Gradient {
            GradientStop {
                position: 0
                color: AppTheme.bgTop
            }
            GradientStop {
                position: 0.5
                color: AppTheme.bgMiddle
            }
            GradientStop {
                position: 1
                color: AppTheme.bgBottom
            }
        }
    }
}
