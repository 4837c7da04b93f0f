pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What is studied, and whether a session can start.
ColumnLayout {
    id: topic

    required property QuorvelController controller

    spacing: 8

    CaptionText {
        Layout.fillWidth: true
        font.weight: Font.Bold
        color: AppTheme.textMuted
        text: L10n.t("current_topic", topic.controller.language)
    }

    GlassField {
        Layout.fillWidth: true
        placeholder: L10n.t("all_topics", topic.controller.language)
        accessibleName: L10n.t("current_topic", topic.controller.language)
        draft: topic.controller.currentStudyTopicText
        onEdited: text => topic.controller.currentStudyTopicText = text
    }

    CaptionText {
        Layout.fillWidth: true
        color: topic.controller.readinessIsShort ? AppTheme.red : AppTheme.textMuted
        text: topic.controller.startReadinessText
    }
}
