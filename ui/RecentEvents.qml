pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What happened lately, newest first; the lines can be selected and copied.
Panel {
    id: events

    required property QuorvelController controller

    title: L10n.t("recent_events", controller.language)
    contentSpacing: AppTheme.statusGap

    EmptyState {
        Layout.fillWidth: true
        visible: lines.count === 0
        iconName: "clock-question"
        title: L10n.t("no_events", events.controller.language)
        message: L10n.t("events_message", events.controller.language)
    }

    Repeater {
        id: lines

        model: events.controller.recentEventModel

        ColumnLayout {
            id: row

            required property int index
            required property string line

            Layout.fillWidth: true
            spacing: AppTheme.statusGap

            Rule {
                visible: row.index > 0
                color: AppTheme.hairline
            }

            SelectableText {
                Layout.fillWidth: true
                text: row.line
            }
        }
    }
}
