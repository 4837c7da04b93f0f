pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The question of the card that is asked, how often it was known, and the answer once it is revealed.
Item {
    id: flashcard

    required property QuorvelController controller

    readonly property studyCard card: controller.activeStudyCard

    implicitHeight: column.implicitHeight + 32

    RowSurface {}

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 16
        spacing: 4

        CaptionText {
            Layout.fillWidth: true
            font.weight: Font.Bold
            color: AppTheme.textMuted
            text: flashcard.card.hasTopic ? flashcard.card.topic
                                          : L10n.t("no_topic", flashcard.controller.language)
        }

        Title3Text {
            Layout.fillWidth: true
            font.weight: Font.Bold
            text: flashcard.card.prompt
        }

        CardCounts {
            Layout.fillWidth: true
            Layout.topMargin: 4
            correct: flashcard.card.correctCount
            missed: flashcard.card.wrongCount
        }

        CaptionText {
            Layout.fillWidth: true
            Layout.topMargin: 8
            visible: flashcard.controller.hasQuizRevealedAnswer
            font.weight: Font.Bold
            color: AppTheme.textMuted
            text: L10n.t("expected", flashcard.controller.language)
        }

        CalloutText {
            Layout.fillWidth: true
            visible: flashcard.controller.hasQuizRevealedAnswer
            text: flashcard.controller.quizRevealedAnswer
        }
    }
}
