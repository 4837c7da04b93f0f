pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What happened lately, newest first; the lines can be selected and copied.
Panel {
    id: events

    required property QuorvelController controller

    title: L10n.t("recent_events", controller.language)

    EmptyState {
        Layout.fillWidth: true
        visible: events.controller.recentEvents.length === 0
        iconName: "clock-question"
        title: L10n.t("no_events", events.controller.language)
        message: L10n.t("events_message", events.controller.language)
    }

    Repeater {
        model: events.controller.recentEvents

        ColumnLayout {
            id: row

            required property int index
            required property string modelData

            Layout.fillWidth: true
            spacing: 0

            Rule {
                visible: row.index > 0
                color: AppTheme.hairline
            }

            TextEdit {
                Layout.fillWidth: true
                Layout.topMargin: row.index > 0 ? 9 : 0
                Layout.bottomMargin: 9
                text: row.modelData
                textFormat: TextEdit.PlainText
                readOnly: true
                selectByMouse: true
                activeFocusOnTab: true
                wrapMode: TextEdit.Wrap
                color: AppTheme.textPrimary
                selectionColor: AppTheme.faded(AppTheme.neonPurple, 0.6)
                selectedTextColor: AppTheme.textPrimary
                font.pixelSize: 14
                font.letterSpacing: -0.1

                Accessible.role: Accessible.StaticText
                Accessible.name: row.modelData

                FocusRing {
                    controlRadius: 8
                    visible: parent.activeFocus
                }
            }
        }
    }
}
