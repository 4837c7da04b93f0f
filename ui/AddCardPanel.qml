pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The editor of a new card.
Panel {
    id: editor

    required property QuorvelController controller
    required property real room ///< its width

    readonly property bool narrow: room < 700

    title: L10n.t("add_card", controller.language)
    subtitle: L10n.t("add_card_subtitle", controller.language)

    GridLayout {
        Layout.fillWidth: true
        columns: editor.narrow ? 1 : 2
        columnSpacing: 10
        rowSpacing: 10

        GlassField {
            Layout.fillWidth: true
            Layout.columnSpan: editor.narrow ? 1 : 2
            placeholder: L10n.t("topic_blank", editor.controller.language)
            accessibleName: placeholder
            draft: editor.controller.newCardTopicText
            onEdited: text => editor.controller.newCardTopicText = text
        }

        GlassField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            placeholder: L10n.t("question", editor.controller.language)
            accessibleName: placeholder
            draft: editor.controller.newCardPromptText
            onEdited: text => editor.controller.newCardPromptText = text
        }

        GlassField {
            Layout.fillWidth: true
            Layout.preferredWidth: 1
            placeholder: L10n.t("expected_answer", editor.controller.language)
            accessibleName: placeholder
            draft: editor.controller.newCardAnswerText
            onEdited: text => editor.controller.newCardAnswerText = text
            onAccepted: editor.controller.addStudyCard()
        }
    }

    PrimaryButton {
        Layout.topMargin: 14
        text: L10n.t("add_card", editor.controller.language)
        onClicked: editor.controller.addStudyCard()
    }
}
