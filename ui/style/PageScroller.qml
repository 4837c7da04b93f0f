pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A page taller than its place: scrolls by wheel, scroller and keyboard, and keeps the focused control in
/// sight. `content` is as wide as the page.
Flickable {
    id: page

    required property Item content

    contentWidth: width
    contentHeight: content.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    clip: true

    ScrollBar.vertical: ThinScrollBar {}
    Keys.forwardTo: [scrolling]

    PageScrolling {
        id: scrolling

        page: page
    }
}
