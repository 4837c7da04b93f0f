pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The lower half of the dashboard: what is seen of the desktop, the card that is asked, and what comes next.
ColumnLayout {
    id: details

    required property SectionPage page

    readonly property real planWidth: Math.max(300, Math.min(420, page.room * 0.34))

    spacing: AppTheme.blockGap

    GridLayout {
        Layout.fillWidth: true
        columns: 3
        columnSpacing: AppTheme.tileGap
        rowSpacing: AppTheme.tileGap

        StatusChip {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "window"
            title: L10n.t("active_app", details.page.controller.language)
            value: details.page.controller.activeAppName
        }

        StatusChip {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "timer"
            title: L10n.t("idle", details.page.controller.language)
            value: details.page.controller.idleSeconds + "s"
        }

        StatusChip {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredWidth: 1
            iconName: "blocked"
            title: L10n.t("blocked_apps", details.page.controller.language)
            value: details.page.controller.blockedAppSummaryText
        }
    }

    GridLayout {
        Layout.fillWidth: true
        columns: details.page.narrow ? 1 : 2
        columnSpacing: AppTheme.blockGap
        rowSpacing: AppTheme.blockGap

        QuizPanel {
            Layout.fillWidth: true
            Layout.fillHeight: true
            controller: details.page.controller
            room: details.page.narrow ? details.page.room : details.page.room - details.planWidth - AppTheme.blockGap
        }

        PlanPreview {
            Layout.fillWidth: details.page.narrow
            Layout.fillHeight: true
            Layout.preferredWidth: details.page.narrow ? -1 : details.planWidth
            controller: details.page.controller
        }
    }
}
