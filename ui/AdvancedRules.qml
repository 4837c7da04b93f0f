pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The lists of applications and sites, for those who want their own.
Panel {
    id: rules

    required property QuorvelController controller
    required property real room ///< its width

    title: L10n.t("advanced_rules", controller.language)
    subtitle: controller.proModeEnabled ? L10n.t("advanced_rules_subtitle", controller.language) : ""

    Column { // a layout would miss how tall the text gets in a narrower window
        id: note

        Layout.fillWidth: true
        visible: !rules.controller.proModeEnabled

        CalloutText {
            width: Math.min(680, note.width)
            text: L10n.t("simple_mode_note", rules.controller.language)
        }
    }

    GridLayout {
        Layout.fillWidth: true
        visible: rules.controller.proModeEnabled
        columns: rules.room < 640 ? 1 : 2
        columnSpacing: 16
        rowSpacing: 18

        RuleEditor {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignTop
            label: L10n.t("blocked_apps", rules.controller.language)
            draft: rules.controller.blockedAppsText
            onEdited: text => rules.controller.blockedAppsText = text
        }

        RuleEditor {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignTop
            label: L10n.t("blocked_domains", rules.controller.language)
            draft: rules.controller.blockedDomainsText
            onEdited: text => rules.controller.blockedDomainsText = text
        }

        RuleEditor {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignTop
            label: L10n.t("allowed_study_apps", rules.controller.language)
            draft: rules.controller.allowedStudyAppsText
            onEdited: text => rules.controller.allowedStudyAppsText = text
        }

        RuleEditor {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            Layout.alignment: Qt.AlignTop
            label: L10n.t("allowed_study_domains", rules.controller.language)
            note: L10n.t("allowed_domains_subtitle", rules.controller.language)
            draft: rules.controller.allowedStudyDomainsText
            onEdited: text => rules.controller.allowedStudyDomainsText = text
        }
    }
}
