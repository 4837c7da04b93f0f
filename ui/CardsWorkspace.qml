pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The card bank: adding a card, being asked one, and the list of all.
PanelListPage {
    id: workspace

    required property QuorvelController controller

    focus: true
    accessibleName: L10n.t("card_bank", controller.language)
    head: blocks
    foot: end
    model: controller.studyCardModel

    delegate: StudyCardRow {
        controller: workspace.controller
    }

    PanelListHeader {
        id: blocks

        title: L10n.t("card_bank", workspace.controller.language)
        subtitle: workspace.controller.cardBankText

        CommandBar {
            Layout.fillWidth: true
            Layout.bottomMargin: AppTheme.titleGap - AppTheme.blockGap
            controller: workspace.controller
            section: ProductSection.Cards
            room: workspace.room
        }

        AddCardPanel {
            Layout.fillWidth: true
            controller: workspace.controller
            room: workspace.room
        }

        QuizPanel {
            Layout.fillWidth: true
            controller: workspace.controller
            room: workspace.room
        }
    }

    PanelListFooter {
        id: end

        EmptyState {
            Layout.fillWidth: true
            visible: workspace.count === 0
            iconName: "cards"
            title: L10n.t("no_cards_yet", workspace.controller.language)
            message: L10n.t("no_cards_message", workspace.controller.language)
        }
    }
}
