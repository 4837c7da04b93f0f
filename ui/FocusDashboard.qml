pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The session: its clock and commands, how to begin, what was reached, what is seen of the desktop, the card
/// that is asked, and what comes next.
SectionPage {
    id: page

    readonly property real planWidth: Math.max(300, Math.min(420, room * 0.34))

    section: ProductSection.Focus

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        FocusHero {
            Layout.fillWidth: true
            controller: page.controller
            narrow: page.narrow
        }

        QuickStartPanel {
            Layout.fillWidth: true
            controller: page.controller
            narrow: page.narrow
        }

        GridLayout {
            Layout.fillWidth: true
            columns: page.narrow ? 2 : 4
            columnSpacing: AppTheme.tileGap
            rowSpacing: AppTheme.tileGap

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "clock"
                title: L10n.t("today", page.controller.language)
                value: L10n.duration(page.controller.todayStudySeconds)
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "check-seal"
                title: L10n.t("sessions", page.controller.language)
                value: page.controller.completedSessions
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "check-circle"
                title: L10n.t("card_proof", page.controller.language)
                value: page.controller.proofProgressText
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "tag"
                title: L10n.t("topic_cards", page.controller.language)
                value: page.controller.topicCardCount
            }
        }

        CharacterPanel {
            Layout.fillWidth: true
            controller: page.controller
        }

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
                title: L10n.t("active_app", page.controller.language)
                value: page.controller.activeAppName
            }

            StatusChip {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "timer"
                title: L10n.t("idle", page.controller.language)
                value: page.controller.idleSeconds + "s"
            }

            StatusChip {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "blocked"
                title: L10n.t("blocked_apps", page.controller.language)
                value: page.controller.blockedAppSummaryText
            }
        }

        GridLayout {
            Layout.fillWidth: true
            columns: page.narrow ? 1 : 2
            columnSpacing: AppTheme.blockGap
            rowSpacing: AppTheme.blockGap

            QuizPanel {
                Layout.fillWidth: true
                Layout.fillHeight: true
                controller: page.controller
                room: page.narrow ? page.room : page.room - page.planWidth - AppTheme.blockGap
            }

            PlanPreview {
                Layout.fillWidth: page.narrow
                Layout.fillHeight: true
                Layout.preferredWidth: page.narrow ? -1 : page.planWidth
                controller: page.controller
            }
        }
    }
}
