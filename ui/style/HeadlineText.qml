pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 22
    font.pixelSize: 16
    font.weight: Font.DemiBold
    font.letterSpacing: -0.2
}
