pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// Figures that keep their places while they count: each digit has a cell of its own, since the text engine
/// cannot ask the font for tabular figures. Assistive tools read it as one text.
Item {
    id: figures

    required property string text
    required property int pixelSize
    property real line: pixelSize * 76 / 68
    property color color: AppTheme.textPrimary
    /// A digit that changes comes in from above, while the one before it goes down and fades.
    property bool counting: false

    readonly property real digitCell: 0.682 * pixelSize
    readonly property real colonCell: 0.298 * pixelSize
    /// Nothing rolls where nobody sees it, nor what has changed meanwhile.
    readonly property bool rolls: counting && visible && !AppTheme.reducedMotion && awake
                                  && Window.visibility !== Window.Hidden && Window.visibility !== Window.Minimized
    property bool awake: true
    property string shown ///< the text, as long as the window can be seen

    onTextChanged: awake = AppTheme.seen

    implicitWidth: row.implicitWidth
    implicitHeight: line
    baselineOffset: line / 2 + 0.364 * pixelSize ///< half of Inter's capitals below the middle

    Accessible.role: Accessible.StaticText
    Accessible.name: text

    Binding on shown {
        when: AppTheme.seen
        value: figures.text
        restoreMode: Binding.RestoreNone
    }

    Connections {
        target: AppTheme

        function onSeenChanged() {
            figures.awake = false;
        }
    }

    Row {
        id: row

        height: parent.height

        Repeater {
            model: figures.shown.length // another length makes them anew, and nothing rolls

            TabularDigit {
                required property int index

                width: character === ":" ? figures.colonCell : figures.digitCell
                height: row.height
                character: figures.shown.charAt(index)
                pixelSize: figures.pixelSize
                color: figures.color
                rolls: figures.rolls
            }
        }
    }
}
