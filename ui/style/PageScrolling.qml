pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// How a page scrolls: by keyboard, and so that the focused control stays in sight.
Item {
    id: scrolling

    required property Flickable page

    signal scrolled()

    readonly property Item focusItem: Window.activeFocusItem
    readonly property real firstY: page.originY
    readonly property real lastY: Math.max(firstY, page.originY + page.contentHeight - page.height)

    function scrollBy(distance: real): void {
        page.contentY = Math.max(firstY, Math.min(lastY, page.contentY + distance));
        scrolled();
    }

    /// Scrolls no further than needed. Of something that scrolls by itself only the frame counts.
    function show(item: Item): void {
        let shown = item;
        let ancestor = item;
        while (ancestor && ancestor !== page) {
            if (ancestor instanceof Flickable)
                shown = ancestor;
            ancestor = ancestor.parent;
        }
        if (!ancestor || item === page)
            return;
        const top = shown.mapToItem(page.contentItem, 0, 0).y;
        const margin = AppTheme.blockGap;
        if (top - margin < page.contentY)
            scrollBy(top - margin - page.contentY);
        else if (top + shown.height + margin > page.contentY + page.height)
            scrollBy(top + shown.height + margin - page.contentY - page.height);
    }

    onFocusItemChanged: {
        if (focusItem)
            show(focusItem);
    }

    Keys.onPressed: event => {
        event.accepted = true;
        switch (event.key) {
        case Qt.Key_PageDown:
            scrolling.scrollBy(scrolling.page.height * 0.9);
            break;
        case Qt.Key_PageUp:
            scrolling.scrollBy(-scrolling.page.height * 0.9);
            break;
        case Qt.Key_Down:
            scrolling.scrollBy(60);
            break;
        case Qt.Key_Up:
            scrolling.scrollBy(-60);
            break;
        default:
            event.accepted = false;
        }
    }
}
