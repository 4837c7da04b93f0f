pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// One step of the way into a session.
Item {
    id: step

    required property string number
    required property string iconName
    required property string title
    required property string body

    implicitHeight: column.implicitHeight + 28

    Surface {
        radius: 14
        startColor: AppTheme.tileFill
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.7)
    }

    Column {
        id: column

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 14

        Item {
            width: parent.width
            height: 24

            Item {
                width: 24
                height: 24

                Surface {
                    radius: 8
                    startColor: AppTheme.faded(AppTheme.neonPurple, 0.18)
                    outlineWidth: 0
                }

                CaptionText {
                    anchors.centerIn: parent
                    font.weight: Font.Bold
                    text: step.number
                }
            }

            Icon {
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                name: step.iconName
                size: 18
                color: AppTheme.quietIcon
            }
        }

        CalloutText {
            width: parent.width
            topPadding: halfLeading + 12
            font.weight: Font.DemiBold
            text: step.title
        }

        CaptionText {
            width: parent.width
            topPadding: halfLeading + 4
            color: AppTheme.textMuted
            text: step.body
        }
    }
}
