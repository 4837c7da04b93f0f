pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The settings. What is typed here is in force once it is saved.
SectionPage {
    id: workspace

    required property DesktopSupport desktopSupport

    section: ProductSection.Rules

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        BasicSettings {
            Layout.fillWidth: true
            controller: workspace.controller
        }

        AdvancedRules {
            Layout.fillWidth: true
            controller: workspace.controller
            room: workspace.room
        }

        Flow {
            Layout.fillWidth: true
            spacing: AppTheme.buttonGap

            GlassButton {
                iconName: "reset"
                text: L10n.t("reset_defaults", workspace.controller.language)
                onClicked: workspace.controller.resetDefaultSettings()
            }

            GlassButton {
                iconName: "folder-add"
                text: L10n.t("merge_blocklists", workspace.controller.language)
                onClicked: workspace.controller.mergeDefaultBlocklists()
            }

            PrimaryButton {
                iconName: "check-circle-filled"
                text: L10n.t("save_settings", workspace.controller.language)
                onClicked: workspace.controller.saveSettings()
            }
        }

        DesktopSupportPanel {
            Layout.fillWidth: true
            controller: workspace.controller
            desktopSupport: workspace.desktopSupport
        }
    }
}
