pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 20
    font.pixelSize: 14
    font.weight: Font.Normal
    font.letterSpacing: -0.1
}
