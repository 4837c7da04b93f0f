pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// Asks the coach for tasks and cards, and shows what it says.
Panel {
    id: coach

    required property QuorvelController controller

    title: L10n.t("ai_coach", controller.language)
    subtitle: L10n.t("ai_coach_subtitle", controller.language)
    contentSpacing: 14

    GlassField {
        Layout.fillWidth: true
        placeholder: L10n.t("topic_or_goal", coach.controller.language)
        accessibleName: placeholder
        draft: coach.controller.aiPromptText
        onEdited: text => coach.controller.aiPromptText = text
    }

    Flow {
        Layout.fillWidth: true
        spacing: AppTheme.buttonGap

        PrimaryButton {
            iconName: "sparkles"
            text: L10n.t(coach.controller.isAICoachRunning ? "generating" : "generate_plan_cards",
                         coach.controller.language)
            enabled: !coach.controller.isAICoachRunning
            onClicked: coach.controller.generateAIPlanAndCards()
        }

        GlassButton {
            iconName: "wand"
            text: L10n.t("local_pack", coach.controller.language)
            enabled: !coach.controller.isAICoachRunning
            onClicked: coach.controller.addLocalCoachPack()
        }
    }

    SelectableText {
        Layout.fillWidth: true
        color: AppTheme.textMuted
        text: coach.controller.aiOutputText
    }
}
