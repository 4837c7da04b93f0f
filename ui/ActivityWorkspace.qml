pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What the program sees right now, and what it has done.
SectionPage {
    id: workspace

    section: ProductSection.Activity

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        Panel {
            Layout.fillWidth: true
            title: L10n.t("system_status", workspace.controller.language)
            contentSpacing: AppTheme.statusGap

            StatusLine {
                Layout.fillWidth: true
                label: L10n.t("mode", workspace.controller.language)
                values: [workspace.controller.modeText]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("active_app", workspace.controller.language)
                values: [workspace.controller.activeAppName]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("idle", workspace.controller.language)
                values: [workspace.controller.idleSeconds]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("blocked_apps", workspace.controller.language)
                values: [workspace.controller.blockedAppSummaryText]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("readiness", workspace.controller.language)
                values: [workspace.controller.startReadinessText]
            }
        }

        RecentEvents {
            Layout.fillWidth: true
            controller: workspace.controller
        }
    }
}
