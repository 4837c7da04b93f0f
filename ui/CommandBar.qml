pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The page's title, the commands that apply everywhere, and a warning while something could not be saved. The
/// commands go under a title that they would leave too little room.
GridLayout {
    id: bar

    required property QuorvelController controller
    required property int section
    required property real room ///< its width

    readonly property bool wide: room - commands.implicitWidth - columnSpacing >= 260

    columns: wide ? 2 : 1
    columnSpacing: 12
    rowSpacing: 13

    ColumnLayout {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignTop
        spacing: 0

        PageTitleText {
            Layout.fillWidth: true
            text: Sections.title(bar.section, bar.controller.language)
            Accessible.role: Accessible.Heading
        }

        CalloutText {
            Layout.fillWidth: true
            color: AppTheme.textMuted
            text: Sections.subtitle(bar.section, bar.controller.language)
        }
    }

    RowLayout {
        id: commands

        Layout.alignment: bar.wide ? Qt.AlignTop | Qt.AlignRight : Qt.AlignLeft
        Layout.topMargin: bar.wide ? 1 : 0
        spacing: 10

        GlassButton {
            visible: bar.section === ProductSection.Rules
            iconName: "check-circle"
            text: L10n.t("save_settings", bar.controller.language)
            onClicked: bar.controller.saveSettings()
        }

        GlassButton {
            iconName: "lock"
            text: L10n.t("manual_lock", bar.controller.language)
            onClicked: bar.controller.lockNow()
        }

        GlassButton {
            iconName: "power"
            text: L10n.t("stop_quorvel", bar.controller.language)
            onClicked: bar.controller.stopQuorvel()
        }
    }

    SelectableText {
        Layout.columnSpan: bar.columns
        Layout.fillWidth: true
        Layout.maximumWidth: 680
        visible: text !== ""
        color: AppTheme.red
        text: bar.controller.unsavedText
        Accessible.role: Accessible.AlertMessage
    }
}
