pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// A row of a PanelListPage. Its buttons are reached by Tab while it is the current one.
FocusScope {
    id: row

    required property int index
    required property string accessibleName
    default property alias content: frame.data

    readonly property PanelListPage page: ListView.view as PanelListPage
    readonly property bool current: page !== null && page.currentRow === index
    property real contentHeight: 0

    /// Lets `remove` take this row out of the model; the keyboard, if it was here, goes to the row that follows.
    function goneBy(remove: var): void {
        const list = page;
        const hadFocus = activeFocus;
        remove(); // this row is no more
        if (hadFocus)
            list.focusRow(Qt.TabFocusReason);
    }

    width: page ? page.width : 0
    height: contentHeight

    // A row that waits to be used again is only left out of the picture; assistive tools would go on reading it.
    ListView.onPooled: visible = false
    ListView.onReused: visible = true

    Accessible.role: Accessible.ListItem
    Accessible.name: accessibleName

    onActiveFocusChanged: {
        if (activeFocus && page)
            page.currentRow = index;
    }

    Keys.onDownPressed: page.step(1)
    Keys.onUpPressed: page.step(-1)

    Item {
        id: frame

        x: AppTheme.pageMargin + AppTheme.panelPadding
        width: row.width - 2 * x
        height: row.height

        RowSurface {}
    }
}
