pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The session: its clock and commands, how to begin, what was reached, what is seen of the desktop, the card
/// that is asked, and what comes next.
SectionPage {
    id: page

    property bool whole: true ///< false leaves out the lower half, which a first frame need not wait for

    section: ProductSection.Focus

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        FocusHero {
            Layout.fillWidth: true
            controller: page.controller
            narrow: page.narrow
        }

        QuickStartPanel {
            Layout.fillWidth: true
            controller: page.controller
            narrow: page.narrow
        }

        GridLayout {
            Layout.fillWidth: true
            columns: page.narrow ? 2 : 4
            columnSpacing: AppTheme.tileGap
            rowSpacing: AppTheme.tileGap

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "clock"
                title: L10n.t("today", page.controller.language)
                value: L10n.duration(page.controller.todayStudySeconds)
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "check-seal"
                title: L10n.t("sessions", page.controller.language)
                value: page.controller.completedSessions
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "check-circle"
                title: L10n.t("card_proof", page.controller.language)
                value: page.controller.proofProgressText
            }

            MetricTile {
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.preferredWidth: 1
                iconName: "tag"
                title: L10n.t("topic_cards", page.controller.language)
                value: page.controller.topicCardCount
            }
        }

        CharacterPanel {
            Layout.fillWidth: true
            controller: page.controller
        }

        // By address: a Loader of Qt 6.4 cannot make a component that is bound to its file.
        Loader {
            Layout.fillWidth: true
            active: page.whole
            Component.onCompleted: setSource("FocusDetails.qml", {"page": page})
        }
    }
}
