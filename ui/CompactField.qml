pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A short field under its label.
ColumnLayout {
    id: compact

    required property string label
    required property string draft

    signal edited(string text)

    spacing: AppTheme.labelGap

    CaptionText {
        Layout.fillWidth: true
        color: AppTheme.textMuted
        text: compact.label
    }

    GlassField {
        Layout.fillWidth: true
        accessibleName: compact.label
        draft: compact.draft
        onEdited: text => compact.edited(text)
    }
}
