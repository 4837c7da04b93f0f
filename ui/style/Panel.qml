pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The card that groups a block: a title, perhaps a subtitle, and what is put in it, in a column.
Item {
    id: panel

    property string title: ""
    property string subtitle: ""
    property int contentSpacing: 0
    default property alias content: column.data

    implicitWidth: frame.implicitWidth + 2 * AppTheme.panelPadding
    implicitHeight: frame.implicitHeight + 2 * AppTheme.panelPadding

    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Surface {
        radius: 24
        baseColor: AppTheme.panelMaterial
        startColor: AppTheme.faded(AppTheme.neonPurple, 0.1)
        middleColor: AppTheme.faded(AppTheme.neonGreen, 0.045)
        endColor: "transparent"
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.78)
        shadowColor: Qt.rgba(0, 0, 0, 0.28)
        shadowSigma: 24
        shadowOffset: Qt.point(0, 18)
        secondShadowColor: AppTheme.faded(AppTheme.neonPurple, 0.08)
        secondShadowSigma: 30
    }

    ColumnLayout {
        id: frame

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: AppTheme.panelPadding
        spacing: AppTheme.headerGap

        ColumnLayout {
            Layout.fillWidth: true
            visible: panel.title !== ""
            spacing: 3

            HeadlineText {
                Layout.fillWidth: true
                text: panel.title
                Accessible.role: Accessible.Heading
            }

            CaptionText {
                Layout.fillWidth: true
                visible: panel.subtitle !== ""
                text: panel.subtitle
                color: AppTheme.textMuted
            }
        }

        ColumnLayout {
            id: column

            Layout.fillWidth: true
            spacing: panel.contentSpacing
        }
    }
}
