pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

BaseText {
    line: 24
    font.pixelSize: 18
    font.weight: Font.DemiBold
    font.letterSpacing: -0.25
}
