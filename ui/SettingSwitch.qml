pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A setting that is on or off, with what it means.
RowLayout {
    id: setting

    required property string title
    required property string subtitle
    required property bool on

    signal flipped(bool on)

    spacing: 12

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        CalloutText {
            Layout.fillWidth: true
            font.weight: Font.DemiBold
            text: setting.title
        }

        CaptionText {
            Layout.fillWidth: true
            color: AppTheme.textMuted
            text: setting.subtitle
        }
    }

    GlassSwitch {
        accessibleName: setting.title
        Accessible.description: setting.subtitle
        checked: setting.on
        onToggled: setting.flipped(checked)
    }
}
