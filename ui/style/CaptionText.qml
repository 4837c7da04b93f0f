pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 16
    font.pixelSize: 12
    font.weight: Font.Normal
    font.letterSpacing: 0
}
