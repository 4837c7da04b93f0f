pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The session's clock with its commands.
Panel {
    id: hero

    required property QuorvelController controller
    required property bool narrow

    readonly property color accent: AppTheme.accent(controller.mode)

    Accessible.name: L10n.t("session", controller.language)

    ModePill {
        controller: hero.controller
    }

    HeadlineText {
        Layout.fillWidth: true
        Layout.topMargin: 14
        color: AppTheme.textMuted
        text: hero.controller.primaryTimerTitle
    }

    TabularText {
        id: clock

        Layout.leftMargin: -3 // the first figure stands on the panel's edge
        pixelSize: 68
        line: 76
        color: hero.accent
        counting: true
        text: hero.controller.primaryTimerText
        Accessible.description: hero.controller.primaryTimerTitle

        GlowItem {
            anchors.centerIn: parent
            width: parent.width + 90
            height: parent.height + 90
            z: -1
            glowColor: AppTheme.faded(hero.accent, 0.16)
        }
    }

    SessionBar {
        Layout.fillWidth: true
        Layout.topMargin: 10
        progress: hero.controller.sessionProgress
        color: hero.accent
        accessibleName: L10n.t("session_progress", hero.controller.language)
    }

    GridLayout {
        Layout.fillWidth: true
        Layout.topMargin: 16
        columns: hero.narrow ? 1 : 2
        columnSpacing: 12
        rowSpacing: 16

        Column {
            id: words

            Layout.fillWidth: true
            spacing: 12

            CalloutText {
                width: Math.min(520, words.width)
                color: AppTheme.textMuted
                text: hero.controller.focusSubtitle
            }

            Pill {
                text: hero.controller.proofPolicyText
                color: AppTheme.neonGreen
                fillOpacity: 0.12
                outlineOpacity: 0.35
                weight: Font.Bold
            }
        }

        RowLayout {
            Layout.alignment: hero.narrow ? Qt.AlignLeft : Qt.AlignRight | Qt.AlignBottom
            spacing: AppTheme.buttonGap

            PrimaryButton {
                iconName: "play"
                text: L10n.t("start_study", hero.controller.language)
                enabled: hero.controller.canStartStudy
                onClicked: hero.controller.startStudy()
            }

            GlassButton {
                iconName: "cup"
                text: L10n.t("manual_break", hero.controller.language)
                onClicked: hero.controller.unlockManualBreak(15)
            }
        }
    }

    Rule {
        Layout.topMargin: 20
    }

    TopicField {
        Layout.fillWidth: true
        Layout.topMargin: 16
        controller: hero.controller
    }
}
