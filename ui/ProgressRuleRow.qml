pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// One thing that gives XP, and how much.
Item {
    id: rule

    required property string iconName
    required property string label
    required property string amount

    implicitHeight: Math.max(44, text.implicitHeight + 24)

    Surface {
        radius: 16
        startColor: AppTheme.tileFill
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.65)
    }

    Icon {
        id: icon

        x: 16
        anchors.verticalCenter: parent.verticalCenter
        name: rule.iconName
        size: 18
        color: AppTheme.quietIcon
    }

    CalloutText {
        id: text

        anchors.left: icon.right
        anchors.leftMargin: 12
        anchors.right: amount.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: rule.label
    }

    CalloutText {
        id: amount

        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        font.weight: Font.Bold
        color: AppTheme.neonGreen
        wrapMode: Text.NoWrap
        text: rule.amount
        Accessible.description: rule.label
    }
}
