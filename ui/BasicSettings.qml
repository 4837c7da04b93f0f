pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The clocks, the cards that a break needs, and the way to the rest.
Panel {
    id: basic

    required property QuorvelController controller

    title: L10n.t("basic_settings", controller.language)
    subtitle: L10n.t("basic_settings_subtitle", controller.language)

    GridLayout {
        Layout.fillWidth: true
        columns: 3
        columnSpacing: 12

        CompactField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignBottom
            label: L10n.t("study_minutes", basic.controller.language)
            draft: basic.controller.studyMinutesText
            onEdited: text => basic.controller.studyMinutesText = text
        }

        CompactField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignBottom
            label: L10n.t("break_minutes", basic.controller.language)
            draft: basic.controller.breakMinutesText
            onEdited: text => basic.controller.breakMinutesText = text
        }

        CompactField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignBottom
            label: L10n.t("card_proofs_field", basic.controller.language)
            draft: basic.controller.requiredProofsText
            onEdited: text => basic.controller.requiredProofsText = text
        }
    }

    Rule {
        Layout.topMargin: 18
    }

    SettingSwitch {
        Layout.fillWidth: true
        Layout.topMargin: 18
        title: L10n.t("pro_mode", basic.controller.language)
        subtitle: L10n.t("pro_mode_subtitle", basic.controller.language)
        on: basic.controller.proModeEnabled
        onFlipped: on => basic.controller.setProModeEnabled(on)
    }

    CompactField {
        Layout.topMargin: 14
        Layout.fillWidth: false
        Layout.preferredWidth: (basic.width - 2 * AppTheme.panelPadding - 24) / 3
        visible: basic.controller.proModeEnabled
        label: L10n.t("idle_pause_seconds", basic.controller.language)
        draft: basic.controller.maxIdleSecondsText
        onEdited: text => basic.controller.maxIdleSecondsText = text
    }
}
