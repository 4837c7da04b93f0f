pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A list to edit, an entry a line, under its label and perhaps over a note.
ColumnLayout {
    id: editor

    required property string label
    required property string draft
    property string note: ""

    signal edited(string text)

    spacing: AppTheme.labelGap

    CalloutText {
        Layout.fillWidth: true
        font.weight: Font.DemiBold
        text: editor.label
    }

    GlassTextArea {
        Layout.fillWidth: true
        accessibleName: editor.label
        draft: editor.draft
        onEdited: text => editor.edited(text)
    }

    CaptionText {
        Layout.fillWidth: true
        visible: text !== ""
        color: AppTheme.textMuted
        text: editor.note
    }
}
