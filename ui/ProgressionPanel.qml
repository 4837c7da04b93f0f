pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What was earned in all, and what earns more.
Panel {
    id: progression

    required property QuorvelController controller
    required property bool narrow

    title: L10n.t("progression_system", controller.language)
    subtitle: L10n.t("progression_subtitle", controller.language)
    contentSpacing: 8

    GridLayout {
        Layout.fillWidth: true
        Layout.bottomMargin: 8
        columns: progression.narrow ? 2 : 4
        columnSpacing: AppTheme.tileGap
        rowSpacing: AppTheme.tileGap

        MetricTile {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "sparkles"
            title: L10n.t("total_xp", progression.controller.language)
            value: progression.controller.totalXP
        }

        MetricTile {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "timer"
            title: L10n.t("total_focus", progression.controller.language)
            value: L10n.duration(progression.controller.totalFocusSeconds)
        }

        MetricTile {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "flame"
            title: L10n.t("best_streak", progression.controller.language)
            value: progression.controller.bestStreakText
        }

        MetricTile {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "check-circle"
            title: L10n.t("card_proofs", progression.controller.language)
            value: progression.controller.totalCardProofs
        }
    }

    ProgressRuleRow {
        Layout.fillWidth: true
        iconName: "clock"
        label: L10n.t("focus_minute", progression.controller.language)
        amount: "+1 XP"
    }

    ProgressRuleRow {
        Layout.fillWidth: true
        iconName: "cards"
        label: L10n.t("unique_card_proof", progression.controller.language)
        amount: "+10 XP"
    }

    ProgressRuleRow {
        Layout.fillWidth: true
        iconName: "check-seal"
        label: L10n.t("completed_study_session", progression.controller.language)
        amount: "+25 XP"
    }

    ProgressRuleRow {
        Layout.fillWidth: true
        iconName: "checklist"
        label: L10n.t("manual_plan_task", progression.controller.language)
        amount: "+3 XP"
    }
}
