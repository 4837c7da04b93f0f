pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The study plan: adding a task, and the checklist.
PanelListPage {
    id: workspace

    required property QuorvelController controller

    focus: true
    accessibleName: L10n.t("tasks", controller.language)
    head: blocks
    foot: end
    model: controller.studyTaskModel

    delegate: StudyTaskRow {
        controller: workspace.controller
    }

    PanelListHeader {
        id: blocks

        title: L10n.t("tasks", workspace.controller.language)

        CommandBar {
            Layout.fillWidth: true
            Layout.bottomMargin: AppTheme.titleGap - AppTheme.blockGap
            controller: workspace.controller
            section: ProductSection.Plan
            room: workspace.room
        }

        Panel {
            Layout.fillWidth: true
            title: L10n.t("study_plan", workspace.controller.language)
            subtitle: L10n.t("study_plan_subtitle", workspace.controller.language)

            GridLayout {
                Layout.fillWidth: true
                columns: workspace.room < 700 ? 1 : 2 // the example in the field is to be read whole
                columnSpacing: 10
                rowSpacing: AppTheme.headerGap

                GlassField {
                    Layout.fillWidth: true
                    placeholder: L10n.t("add_task_placeholder", workspace.controller.language)
                    accessibleName: L10n.t("next_task", workspace.controller.language)
                    draft: workspace.controller.newStudyTaskText
                    onEdited: text => workspace.controller.newStudyTaskText = text
                    onAccepted: workspace.controller.addStudyTask()
                }

                PrimaryButton {
                    text: L10n.t("add_task", workspace.controller.language)
                    onClicked: workspace.controller.addStudyTask()
                }
            }
        }
    }

    PanelListFooter {
        id: end

        EmptyState {
            Layout.fillWidth: true
            visible: workspace.count === 0
            iconName: "checklist"
            title: L10n.t("no_tasks", workspace.controller.language)
        }

        GlassButton {
            Layout.topMargin: 14
            enabled: workspace.controller.completedTaskCount > 0
            text: L10n.t("clear_completed", workspace.controller.language)
            onClicked: workspace.controller.clearCompletedTasks()
        }
    }
}
