pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The study character and what it has reached.
Panel {
    id: character

    required property QuorvelController controller

    title: L10n.t("character_progress", controller.language)
    subtitle: L10n.t("character_progress_subtitle", controller.language)

    RowLayout {
        Layout.fillWidth: true
        spacing: 18

        Item {
            Layout.preferredWidth: 88
            Layout.preferredHeight: 88
            Layout.alignment: Qt.AlignVCenter

            Surface {
                radius: 24
                startColor: AppTheme.faded(AppTheme.neonPurple, 0.28)
                outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.75)
            }

            Icon {
                anchors.centerIn: parent
                name: character.controller.avatarSymbol
                size: 40
            }
        }

        Column {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignVCenter

            Title2Text {
                width: parent.width
                text: character.controller.characterTitleText
            }

            HeadlineText {
                width: parent.width
                color: AppTheme.textMuted
                text: character.controller.levelText
            }

            Flow {
                width: parent.width
                topPadding: 12
                spacing: 18

                SmallLine {
                    iconName: "sparkles"
                    text: character.controller.xpText
                }

                SmallLine {
                    iconName: "flame"
                    text: character.controller.streakText
                    description: L10n.t("streak", character.controller.language)
                }

                SmallLine {
                    iconName: "timer"
                    text: L10n.duration(character.controller.totalFocusSeconds)
                    description: L10n.t("total_focus", character.controller.language)
                }
            }
        }
    }
}
