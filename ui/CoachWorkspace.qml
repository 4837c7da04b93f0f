pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The coach, what it is told of the student, and where its suggestions go.
SectionPage {
    id: workspace

    section: ProductSection.Coach

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        CoachPanel {
            Layout.fillWidth: true
            controller: workspace.controller
        }

        Panel {
            Layout.fillWidth: true
            title: L10n.t("current_progress_context", workspace.controller.language)
            contentSpacing: AppTheme.statusGap

            StatusLine {
                Layout.fillWidth: true
                label: L10n.t("character", workspace.controller.language)
                values: [workspace.controller.characterTitleText, workspace.controller.levelText,
                    workspace.controller.xpText]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("streak", workspace.controller.language)
                values: [workspace.controller.streakText]
            }

            StatusLine {
                Layout.fillWidth: true
                divided: true
                label: L10n.t("topic", workspace.controller.language)
                values: [workspace.controller.activeTopicDisplay]
            }
        }

        Panel {
            Layout.fillWidth: true
            title: L10n.t("generated_content_lands_here", workspace.controller.language)

            GridLayout {
                Layout.fillWidth: true
                columns: workspace.narrow ? 2 : 3
                columnSpacing: AppTheme.tileGap
                rowSpacing: AppTheme.tileGap

                MetricTile {
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.preferredWidth: 1
                    iconName: "checklist"
                    title: L10n.t("tasks", workspace.controller.language)
                    value: workspace.controller.studyTaskCount
                }

                MetricTile {
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.preferredWidth: 1
                    iconName: "cards"
                    title: L10n.t("cards", workspace.controller.language)
                    value: workspace.controller.studyCardCount
                }

                MetricTile {
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.preferredWidth: 1
                    iconName: "tag"
                    title: L10n.t("topic_cards", workspace.controller.language)
                    value: workspace.controller.topicCardCount
                }
            }
        }
    }
}
