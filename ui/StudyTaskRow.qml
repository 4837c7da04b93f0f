pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// One step of the plan.
PanelListRow {
    id: row

    required property QuorvelController controller
    required property studyTask task

    accessibleName: task.title
    contentHeight: Math.max(title.implicitHeight, AppTheme.controlHeight) + 20

    RowLayout {
        anchors.fill: parent
        anchors.margins: 10
        anchors.leftMargin: 16
        spacing: 10

        CalloutText {
            id: title

            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter
            color: row.task.isCompleted ? AppTheme.textMuted : AppTheme.textPrimary
            font.strikeout: row.task.isCompleted
            text: row.task.title
        }

        GlassButton {
            Layout.preferredWidth: 74
            Layout.alignment: Qt.AlignVCenter
            focus: true
            activeFocusOnTab: row.current || activeFocus
            horizontalPadding: 0
            text: L10n.t(row.task.isCompleted ? "reopen" : "done", row.controller.language)
            Accessible.description: row.task.title
            onClicked: {
                if (row.task.isCompleted)
                    row.controller.reopenStudyTask(row.task);
                else
                    row.controller.completeStudyTask(row.task);
            }
        }

        GlassButton {
            Layout.preferredWidth: AppTheme.controlHeight
            Layout.alignment: Qt.AlignVCenter
            activeFocusOnTab: row.current || activeFocus
            horizontalPadding: 0
            iconName: "trash"
            Accessible.name: L10n.t("delete", row.controller.language)
            Accessible.description: row.task.title
            onClicked: row.goneBy(() => row.controller.deleteStudyTask(row.task))
        }
    }
}
