pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A panel's title, and under it perhaps a subtitle, which wraps.
ColumnLayout {
    id: heading

    required property string title
    required property string subtitle

    spacing: 3

    HeadlineText {
        Layout.fillWidth: true
        text: heading.title
        Accessible.role: Accessible.Heading
    }

    CaptionText {
        Layout.fillWidth: true
        visible: heading.subtitle !== ""
        text: heading.subtitle
        color: AppTheme.textMuted
    }
}
