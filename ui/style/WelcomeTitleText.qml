pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 46
    font.pixelSize: 40
    font.weight: Font.Bold
    font.letterSpacing: -1.0
}
