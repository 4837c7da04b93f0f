pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The session in a small box.
Item {
    id: box

    required property QuorvelController controller

    implicitHeight: column.implicitHeight + 24

    Surface {
        radius: 22
        startColor: AppTheme.faded(AppTheme.neonPurple, 0.16)
        outlineWidth: 0
    }

    ColumnLayout {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 12
        spacing: 0

        CaptionText {
            Layout.fillWidth: true
            color: AppTheme.textMuted
            text: L10n.t("session", box.controller.language)
        }

        RowLayout {
            Layout.fillWidth: true

            CaptionText {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignBottom
                Layout.bottomMargin: 4
                text: box.controller.primaryTimerTitle
            }

            TabularText {
                pixelSize: 22
                line: 28
                text: box.controller.primaryTimerText
            }
        }

        SessionBar {
            Layout.fillWidth: true
            Layout.topMargin: 6
            implicitHeight: 5
            progress: box.controller.sessionProgress
            color: AppTheme.accent(box.controller.mode)
            accessibleName: L10n.t("session_progress", box.controller.language)
        }

        CaptionText {
            Layout.fillWidth: true
            Layout.topMargin: 8
            color: AppTheme.textMuted
            text: box.controller.startReadinessText
        }
    }
}
