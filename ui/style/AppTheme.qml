pragma Singleton
pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The palette and the measures that several building blocks share. Lengths in logical pixels.
QtObject {
    id: theme

    readonly property color bgTop: Qt.rgba(0.035, 0.041, 0.07, 1)
    readonly property color bgBottom: Qt.rgba(0.005, 0.009, 0.02, 1)
    readonly property color neonPurple: Qt.rgba(0.63, 0.33, 1, 1)
    readonly property color neonGreen: Qt.rgba(0.27, 1, 0.56, 1)
    readonly property color glassFill: Qt.rgba(1, 1, 1, 0.07)
    readonly property color glassStroke: Qt.rgba(1, 1, 1, 0.18)
    readonly property color textPrimary: Qt.rgba(1, 1, 1, 0.94)
    readonly property color textMuted: Qt.rgba(1, 1, 1, 0.58)

    readonly property color greenLight: Qt.rgba(0.58, 1, 0.76, 1) ///< end of the primary button's gradient
    readonly property color greenMiddle: Qt.rgba(0.425, 1, 0.66, 1)
    readonly property color textOnGreen: Qt.rgba(0.01, 0.02, 0.02, 1)
    readonly property color red: Qt.rgba(1, 105 / 255, 97 / 255, 1)
    readonly property color panelMaterial: Qt.rgba(36 / 255, 35 / 255, 46 / 255, 0.46)
    readonly property color sidebarMaterial: Qt.rgba(34 / 255, 32 / 255, 44 / 255, 0.34)
    readonly property color tileFill: Qt.rgba(1, 1, 1, 0.04)
    readonly property color placeholder: Qt.rgba(1, 1, 1, 0.55)
    readonly property color selection: Qt.rgba(0.63, 0.33, 1, 0.6)
    readonly property color quietIcon: Qt.rgba(1, 1, 1, 0.81)
    readonly property color hairline: Qt.rgba(1, 1, 1, 0.063)

    readonly property int pageMargin: 30
    readonly property int titleGap: 26
    readonly property int blockGap: 18
    readonly property int tileGap: 12
    readonly property int buttonGap: 12
    readonly property int panelPadding: 20
    readonly property int headerGap: 14
    readonly property int iconGap: 8
    readonly property int labelGap: 6
    readonly property int rowGap: 10
    readonly property int statusGap: 9 ///< between a status line and its hairline
    readonly property int controlHeight: 40
    readonly property int sidebarWidth: 276
    readonly property int narrowContent: 760 ///< below this width tiles stand two by two

    property bool reducedMotion: false ///< the user has asked for less movement; the root view sets it
    /// Whether the window can be seen; the root view sets it. What changes every second stands still while it cannot.
    property bool seen: true
    readonly property int pressDuration: reducedMotion ? 0 : 120 ///< milliseconds

    /// `color` with its own opacity multiplied by `opacity`.
    function faded(color: color, opacity: real): color {
        return Qt.rgba(color.r, color.g, color.b, color.a * opacity);
    }

    /// The one accent of a mode of the controller.
    function accent(mode: int): color {
        switch (mode) {
        case QuorvelController.Locked:
            return theme.red;
        case QuorvelController.Studying:
            return theme.neonPurple;
        case QuorvelController.BreakTime:
            return theme.neonGreen;
        default:
            return theme.textMuted;
        }
    }
}
