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

    RowLayout {
        Layout.fillWidth: true
        spacing: 16

        CaptionText {
            Layout.preferredWidth: 120
            Layout.maximumWidth: 120
            Layout.alignment: Qt.AlignTop
            Layout.topMargin: 3 // on the value's baseline
            color: AppTheme.textMuted
            text: line.label
        }

        Flow {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
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
                                        line.width - 136 - (part.index > 0 ? 13 : 0))
                        text: part.modelData
                        Accessible.description: line.label
                    }
                }
            }
        }
    }
}
