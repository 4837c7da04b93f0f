pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape under every building block: a superellipse with a gradient, an outline and up to two shadows. Fills
/// its parent.
SurfaceItem {
    anchors.fill: parent
}
