pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One card of the bank.
PanelListRow {
    id: row

    required property QuorvelController controller
    required property studyCard card

    accessibleName: card.prompt
    contentHeight: Math.max(texts.implicitHeight, button.implicitHeight) + 28

    RowLayout {
        anchors.fill: parent
        anchors.margins: 14
        spacing: 12

        ColumnLayout {
            id: texts

            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter
            spacing: 3

            CaptionText {
                Layout.fillWidth: true
                font.weight: Font.Bold
                color: AppTheme.textMuted
                text: row.card.hasTopic ? row.card.topic : L10n.t("no_topic", row.controller.language)
            }

            HeadlineText {
                Layout.fillWidth: true
                text: row.card.prompt
            }

            CardCounts {
                Layout.fillWidth: true
                correct: row.card.correctCount
                missed: row.card.wrongCount
            }
        }

        GlassButton {
            id: button

            Layout.alignment: Qt.AlignVCenter
            focus: true
            activeFocusOnTab: row.current || activeFocus
            iconName: "trash"
            text: L10n.t("delete", row.controller.language)
            Accessible.description: row.card.prompt
            onClicked: row.goneBy(() => row.controller.deleteStudyCard(row.card))
        }
    }
}
