pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 42
    font.pixelSize: 36
    font.weight: Font.Bold
    font.letterSpacing: -0.9
}
