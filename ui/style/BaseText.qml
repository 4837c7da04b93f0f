pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// Text on a fixed line grid; each style of the scale sets its size, line and weight. Assistive tools read it.
/// Not a Label: those of Qt 6.4 take their role back when such a tool comes, and a heading is none any more.
Text {
    id: label

    property real line: 20 ///< height of one line

    /// Inter's own line is 1.21 of its size; half of what the grid adds goes above the text.
    readonly property real halfLeading: Math.round((line - 1.21 * font.pixelSize) / 2)

    color: AppTheme.textPrimary
    lineHeightMode: Text.FixedHeight
    lineHeight: line
    topPadding: halfLeading
    bottomPadding: -halfLeading
    textFormat: Text.PlainText
    wrapMode: Text.Wrap

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
