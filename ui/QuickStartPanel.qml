pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// How to begin, in four steps.
Panel {
    id: quickStart

    required property QuorvelController controller
    required property bool narrow

    title: L10n.t("quick_start", controller.language)
    subtitle: L10n.t("quick_start_subtitle", controller.language)

    GridLayout {
        Layout.fillWidth: true
        columns: quickStart.narrow ? 2 : 4
        columnSpacing: AppTheme.tileGap
        rowSpacing: AppTheme.tileGap

        QuickStep {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            number: "1"
            iconName: "target"
            title: L10n.t("quick_step_topic", quickStart.controller.language)
            body: L10n.t("quick_step_topic_body", quickStart.controller.language)
        }

        QuickStep {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            number: "2"
            iconName: "play"
            title: L10n.t("quick_step_start", quickStart.controller.language)
            body: L10n.t("quick_step_start_body", quickStart.controller.language)
        }

        QuickStep {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            number: "3"
            iconName: "shield"
            title: L10n.t("quick_step_focus", quickStart.controller.language)
            body: L10n.t("quick_step_focus_body", quickStart.controller.language)
        }

        QuickStep {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            number: "4"
            iconName: "sparkles"
            title: L10n.t("quick_step_break", quickStart.controller.language)
            body: L10n.t("quick_step_break_body", quickStart.controller.language)
        }
    }
}
