pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// A quick way to put down the next step, and the steps that are open.
Panel {
    id: plan

    required property QuorvelController controller

    title: L10n.t("plan_title", controller.language)
    subtitle: L10n.t("checklist_only", controller.language)

    RowLayout {
        Layout.fillWidth: true
        spacing: 10

        GlassField {
            Layout.fillWidth: true
            placeholder: L10n.t("next_task", plan.controller.language)
            accessibleName: placeholder
            draft: plan.controller.newStudyTaskText
            onEdited: text => plan.controller.newStudyTaskText = text
            onAccepted: plan.controller.addStudyTask()
        }

        GlassButton {
            Layout.preferredWidth: AppTheme.controlHeight
            horizontalPadding: 0
            iconName: "plus"
            Accessible.name: L10n.t("add_task", plan.controller.language)
            onClicked: plan.controller.addStudyTask()
        }
    }

    EmptyState {
        Layout.fillWidth: true
        Layout.topMargin: AppTheme.headerGap
        visible: openTasks.count === 0
        iconName: "checklist"
        title: L10n.t("no_tasks", plan.controller.language)
        message: L10n.t("no_tasks_message", plan.controller.language)
    }

    Repeater {
        id: openTasks

        model: plan.controller.nextOpenTaskTitles

        NextTask {
            required property int index
            required property string modelData

            Layout.fillWidth: true
            Layout.topMargin: index === 0 ? 12 : 0
            divided: index > 0
            title: modelData
        }
    }
}
