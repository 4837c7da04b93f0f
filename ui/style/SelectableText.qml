pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// Callout text that can be selected and copied, but not changed.
TextEdit {
    id: selectable

    color: AppTheme.textPrimary
    selectionColor: AppTheme.selection
    selectedTextColor: AppTheme.textPrimary
    textFormat: TextEdit.PlainText
    wrapMode: TextEdit.Wrap
    readOnly: true
    selectByMouse: true
    activeFocusOnTab: true
    persistentSelection: true
    font.pixelSize: 14
    font.letterSpacing: -0.1

    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.readOnly: true

    LineGrid {
        document: selectable.textDocument
        line: 20
    }

    FocusRing {
        controlRadius: 6
        visible: selectable.activeFocus
    }
}
