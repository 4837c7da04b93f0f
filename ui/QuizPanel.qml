pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The card that is asked, and the way to answer it.
Panel {
    id: quiz

    required property QuorvelController controller
    required property real room ///< its width

    readonly property bool narrow: room < 640

    title: L10n.t("card_proof", controller.language)
    subtitle: controller.cardProofText

    GridLayout {
        Layout.fillWidth: true
        columns: quiz.narrow ? 2 : 3
        columnSpacing: 10
        rowSpacing: AppTheme.labelGap

        CaptionText {
            Layout.columnSpan: quiz.narrow ? 2 : 1
            color: AppTheme.textMuted
            text: L10n.t("current_study_topic", quiz.controller.language)
        }

        GlassField {
            Layout.fillWidth: true
            accessibleName: L10n.t("current_study_topic", quiz.controller.language)
            draft: quiz.controller.currentStudyTopicText
            onEdited: text => quiz.controller.currentStudyTopicText = text
        }

        GlassButton {
            iconName: "shuffle"
            text: L10n.t("pick_card", quiz.controller.language)
            onClicked: quiz.controller.selectNextStudyCard(true)
        }
    }

    EmptyState {
        Layout.fillWidth: true
        Layout.topMargin: AppTheme.headerGap
        visible: !quiz.controller.hasActiveStudyCard
        iconName: "cards-add"
        title: L10n.t("no_card_selected", quiz.controller.language)
        message: L10n.t("no_card_message", quiz.controller.language)
    }

    Flashcard {
        Layout.fillWidth: true
        Layout.topMargin: 14
        visible: quiz.controller.hasActiveStudyCard
        controller: quiz.controller
    }

    GlassField {
        Layout.fillWidth: true
        Layout.topMargin: 14
        visible: quiz.controller.hasActiveStudyCard
        placeholder: L10n.t("answer_from_memory", quiz.controller.language)
        accessibleName: placeholder
        draft: quiz.controller.quizAnswerText
        onEdited: text => quiz.controller.quizAnswerText = text
        onAccepted: quiz.controller.submitQuizAnswer()
    }

    Flow {
        Layout.fillWidth: true
        Layout.topMargin: 14
        visible: quiz.controller.hasActiveStudyCard
        spacing: 10

        PrimaryButton {
            text: L10n.t("submit", quiz.controller.language)
            onClicked: quiz.controller.submitQuizAnswer()
        }

        GlassButton {
            text: L10n.t("reveal", quiz.controller.language)
            onClicked: quiz.controller.revealQuizAnswer()
        }

        GlassButton {
            text: L10n.t("next", quiz.controller.language)
            onClicked: quiz.controller.selectNextStudyCard(true)
        }
    }

    CalloutText {
        Layout.fillWidth: true
        Layout.topMargin: 14
        visible: text !== ""
        color: AppTheme.textMuted
        text: quiz.controller.quizFeedback
    }
}
