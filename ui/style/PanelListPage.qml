import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A page whose last panel holds a list that may be long: the page scrolls as one, and only the rows in sight
/// exist. Its rows are PanelListRows. The view's own header and footer keep places free (Qt 6.4 cannot make those
/// of components that are bound to their file): the head stands in the header, which comes before every row on
/// the way of the Tab key, and the foot on the page itself over the footer, which comes after all of them.
///
/// The list is one stop of the Tab key: the buttons of the current row. Up and Down go to the rows beside it.
ListView {
    id: page

    required property string accessibleName
    required property PanelListHeader head
    required property PanelListFooter foot

    readonly property real room: width - 2 * AppTheme.pageMargin ///< between the margins
    readonly property real headHeight: headerItem ? headerItem.height : 0
    readonly property real headY: headerItem ? headerItem.y : 0
    readonly property real footY: footerItem ? footerItem.y : 0
    /// Not the view's own current item, which takes the keyboard whenever it changes.
    property int currentRow: 0
    property real fromTop: 0 ///< how far the page was scrolled by hand

    function noteScrolled(): void {
        fromTop = contentY + headHeight;
        if (!itemAtIndex(currentRow)) // only rows that exist can be reached by Tab
            currentRow = Math.max(0, indexAt(width / 2, Math.max(0, contentY) + height / 2));
    }

    /// Leaves what is seen of the head where it is. The view itself holds its rows still and lets the head grow
    /// upwards, out of sight.
    function hold(): void {
        if (fromTop < headHeight)
            contentY = Math.max(scrolling.firstY, Math.min(scrolling.lastY, fromTop - headHeight));
    }

    /// The keyboard goes to the current row, where there is one.
    function focusRow(reason: int): void {
        forceLayout();
        const row = itemAtIndex(currentRow);
        if (row)
            row.forceActiveFocus(reason);
        else
            forceActiveFocus(reason);
    }

    function step(rows: int): void {
        const next = currentRow + rows;
        if (next < 0 || next >= count)
            return;
        positionViewAtIndex(next, ListView.Contain);
        itemAtIndex(next).forceActiveFocus(rows > 0 ? Qt.TabFocusReason : Qt.BacktabFocusReason);
        noteScrolled();
    }

    Component.onCompleted: {
        head.parent = headerItem;
        foot.parent = page;
    }

    spacing: AppTheme.rowGap
    reuseItems: true
    currentIndex: -1
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    keyNavigationEnabled: false
    clip: true

    Accessible.role: Accessible.List
    Accessible.name: accessibleName

    ScrollBar.vertical: ThinScrollBar {
        id: bar
    }
    Keys.forwardTo: [scrolling]

    header: Item {}
    footer: Item {}

    Binding {
        target: page.headerItem
        property: "height"
        value: page.head.height
    }

    Binding {
        target: page.footerItem
        property: "height"
        value: page.foot.height
    }

    Binding {
        target: page.head
        property: "width"
        value: page.width
    }

    Binding {
        target: page.foot
        property: "width"
        value: page.width
    }

    Binding {
        target: page.foot
        property: "y"
        value: page.footY - page.contentY
    }

    onContentYChanged: {
        if (moving || bar.pressed)
            noteScrolled();
    }
    onCountChanged: currentRow = Math.max(0, Math.min(currentRow, count - 1))
    onHeadHeightChanged: hold()
    onWidthChanged: hold()
    onHeightChanged: hold()

    PageScrolling {
        id: scrolling

        page: page
        onScrolled: page.noteScrolled()
    }

    // The glass under the rows is only as tall as what can be seen of it.
    PanelSurface {
        readonly property real beyond: 60 ///< hides the corners
        readonly property real panelTop: page.headY + page.head.panelTop
        readonly property real panelBottom: page.footY + page.foot.panelBottom

        parent: page.contentItem
        z: -1
        x: AppTheme.pageMargin
        y: Math.max(panelTop, page.contentY - beyond)
        width: page.width - 2 * AppTheme.pageMargin
        height: Math.max(0, Math.min(panelBottom, page.contentY + page.height + beyond) - y)
    }
}
