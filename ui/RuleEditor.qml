pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// A list to edit, an entry a line, under its label and perhaps over a note.
Column {
    id: editor

    required property string label
    required property string draft
    property string note: ""

    signal edited(string text)

    spacing: AppTheme.labelGap

    CalloutText {
        width: editor.width
        font.weight: Font.DemiBold
        text: editor.label
    }

    GlassTextArea {
        width: editor.width
        height: implicitHeight
        accessibleName: editor.label
        draft: editor.draft
        onEdited: text => editor.edited(text)
    }

    CaptionText {
        width: editor.width
        visible: text !== ""
        topPadding: halfLeading + 2
        color: AppTheme.textMuted
        text: editor.note
    }
}
