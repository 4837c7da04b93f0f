pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A page taller than its place: scrolls by wheel, scroller and keyboard, and keeps the focused control in
/// sight. `content` is as wide as the page.
Flickable {
    id: page

    required property Item content

    readonly property Item focusItem: Window.activeFocusItem

    contentWidth: width
    contentHeight: content.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    clip: true

    ScrollBar.vertical: ThinScrollBar {}

    function scrollBy(distance: real): void {
        contentY = Math.max(0, Math.min(contentHeight - height, contentY + distance));
    }

    onFocusItemChanged: {
        let ancestor = focusItem;
        while (ancestor && ancestor !== content)
            ancestor = ancestor.parent;
        if (!ancestor)
            return;
        const top = focusItem.mapToItem(content, 0, 0).y;
        const margin = AppTheme.blockGap;
        if (top - margin < contentY)
            scrollBy(top - margin - contentY);
        else if (top + focusItem.height + margin > contentY + height)
            scrollBy(top + focusItem.height + margin - contentY - height);
    }

    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_PageDown:
            page.scrollBy(page.height * 0.9);
            break;
        case Qt.Key_PageUp:
            page.scrollBy(-page.height * 0.9);
            break;
        case Qt.Key_Down:
            page.scrollBy(60);
            break;
        case Qt.Key_Up:
            page.scrollBy(-60);
            break;
        default:
            event.accepted = false;
        }
    }
}
