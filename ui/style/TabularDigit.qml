pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// One character in its cell. It shows what it is from the first frame on; rolling adds where it stands and how
/// strong it is, and what it was before on its way out.
Item {
    id: cell

    required property string character
    required property int pixelSize
    required property color color
    required property bool rolls

    property string before: "" ///< what it was, while that is still to be seen
    property real rolled: 1 ///< 0 to 1

    readonly property real way: 0.22 * height
    property string last: ""

    component Figure: Text {
        width: cell.width
        height: cell.height
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
        color: cell.color
        font.pixelSize: cell.pixelSize
        font.weight: Font.Bold
    }

    Component.onCompleted: last = character
    onCharacterChanged: {
        roll.complete();
        if (rolls && last !== "" && last !== ":" && character !== ":" && character !== "") {
            before = last;
            roll.start();
        }
        last = character;
    }
    onRollsChanged: {
        if (!rolls)
            roll.complete();
    }

    Figure {
        y: (cell.rolled - 1) * cell.way
        // Qt's own renderer takes 0.99999 and 1 for the same, and would leave the digit a shade darker.
        opacity: cell.rolled > 0.999 ? 1 : cell.rolled
        text: cell.character
    }

    Figure {
        y: cell.rolled * cell.way
        opacity: 1 - cell.rolled
        visible: cell.before !== ""
        text: cell.before
    }

    NumberAnimation {
        id: roll

        target: cell
        property: "rolled"
        from: 0
        to: 1
        duration: 220
        easing.type: Easing.OutCubic
        onStopped: cell.before = ""
    }
}
