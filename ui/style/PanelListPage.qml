pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A page whose last panel holds a list that may be long: the page scrolls as one, and only the rows in sight
/// exist. Its header is a PanelListHeader, its footer a PanelListFooter, its rows are PanelListRows.
///
/// The list is one stop of the Tab key: the buttons of the current row. Up and Down go to the rows beside it.
ListView {
    id: page

    required property string accessibleName

    readonly property PanelListHeader head: headerItem as PanelListHeader
    readonly property PanelListFooter foot: footerItem as PanelListFooter
    readonly property real headHeight: head ? head.height : 0
    property real knownHeadHeight: 0

    /// The keyboard goes to the current row, where there is one.
    function focusRow(): void {
        forceLayout();
        if (currentItem)
            currentItem.forceActiveFocus(Qt.OtherFocusReason);
        else
            forceActiveFocus(Qt.OtherFocusReason);
    }

    function step(rows: int): void {
        const next = currentIndex + rows;
        if (next < 0 || next >= count)
            return;
        currentIndex = next;
        positionViewAtIndex(next, ListView.Contain);
        currentItem.forceActiveFocus(rows > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason);
    }

    spacing: AppTheme.rowGap
    reuseItems: true
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    clip: true

    Accessible.role: Accessible.List
    Accessible.name: accessibleName

    ScrollBar.vertical: ThinScrollBar {}
    Keys.forwardTo: [scrolling]

    // The view keeps its rows where they are and lets the header grow upwards; who looks at the header is to
    // see it grow downwards.
    onHeadHeightChanged: {
        const grown = headHeight - knownHeadHeight;
        knownHeadHeight = headHeight;
        if (contentY < 0)
            contentY -= grown;
    }

    PageScrolling {
        id: scrolling

        page: page
    }

    // The glass under the rows is only as tall as what can be seen of it.
    PanelSurface {
        readonly property real beyond: 60 ///< hides the corners
        readonly property real panelTop: page.head ? page.head.y + page.head.panelTop : 0
        readonly property real panelBottom: page.foot ? page.foot.y + page.foot.panelBottom : 0

        z: -1
        x: AppTheme.pageMargin
        y: Math.max(panelTop, page.contentY - beyond)
        width: page.width - 2 * AppTheme.pageMargin
        height: Math.max(0, Math.min(panelBottom, page.contentY + page.height + beyond) - y)
    }
}
