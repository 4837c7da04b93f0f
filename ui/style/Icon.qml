pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// One of the drawn icons, in any colour.
Image {
    id: icon

    required property string name
    property int size: 16
    property color color: AppTheme.textPrimary

    width: size
    height: size
    sourceSize.width: size
    sourceSize.height: size
    source: name ? "image://icons/" + name + "/" + color.toString().substring(1) : ""

    Accessible.ignored: true
}
