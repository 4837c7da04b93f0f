pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One line of a label and its value, or of several values beside each other. Lines of one panel have a
/// hairline between them and stand AppTheme.statusGap apart from it.
ColumnLayout {
    id: line

    required property string label
    required property list<string> values
    property bool divided: false ///< whether a line stands above

    spacing: AppTheme.statusGap

    Rule {
        visible: line.divided
        color: AppTheme.hairline
    }

    Item { // a layout would miss how tall the values get in a narrower window
        Layout.fillWidth: true
        implicitHeight: Math.max(name.y + name.height, parts.height)

        CaptionText {
            id: name

            y: 3 // on the value's baseline
            width: 120
            color: AppTheme.textMuted
            text: line.label
        }

        Flow {
            id: parts

            x: 136
            width: parent.width - x
            spacing: 9

            Repeater {
                model: line.values

                Row {
                    id: part

                    required property int index
                    required property string modelData

                    spacing: 9

                    CalloutText {
                        visible: part.index > 0
                        color: AppTheme.textMuted
                        text: "·"
                        Accessible.ignored: true
                    }

                    TextMetrics { // a text that wraps tells its own width only once it has one
                        id: oneLine

                        font: value.font
                        text: part.modelData
                    }

                    CalloutText {
                        id: value

                        width: Math.min(Math.ceil(oneLine.advanceWidth) + 1,
                                        parts.width - (part.index > 0 ? 13 : 0))
                        text: part.modelData
                        Accessible.description: line.label
                    }
                }
            }
        }
    }
}
