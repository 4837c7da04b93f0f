pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 28
    font.pixelSize: 22
    font.weight: Font.Bold
    font.letterSpacing: -0.4
}
