pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The sidebar and the page of the selected section beside it.
FocusScope {
    id: layout

    required property QuorvelController controller
    required property DesktopSupport desktopSupport
    required property int selection

    signal chosen(int section)

    Sidebar {
        id: sidebar

        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        controller: layout.controller
        selection: layout.selection
        onChosen: section => layout.chosen(section)
    }

    Loader {
        anchors.left: sidebar.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        focus: true
        sourceComponent: {
            switch (layout.selection) {
            case ProductSection.Cards:
                return cards;
            case ProductSection.Plan:
                return plan;
            case ProductSection.Rules:
                return rules;
            default:
                return focusPage;
            }
        }
    }

    Component {
        id: focusPage

        SectionPage {
            controller: layout.controller
            section: ProductSection.Focus

            FocusPage {
                controller: layout.controller
                desktopSupport: layout.desktopSupport
            }
        }
    }

    Component {
        id: cards

        CardsWorkspace {
            controller: layout.controller
        }
    }

    Component {
        id: plan

        PlanWorkspace {
            controller: layout.controller
        }
    }

    Component {
        id: rules

        SectionPage {
            controller: layout.controller
            section: ProductSection.Rules

            RulesWorkspace {
                controller: layout.controller
            }
        }
    }

    Shortcut {
        sequence: "Ctrl+L"
        enabled: layout.enabled
        onActivated: layout.controller.lockNow()
    }

    Shortcut {
        sequence: "Ctrl+S"
        enabled: layout.enabled && layout.controller.canStartStudy
        onActivated: layout.controller.startStudy()
    }

    Shortcut {
        sequence: "Ctrl+Shift+S"
        enabled: layout.enabled && layout.selection === ProductSection.Rules
        onActivated: layout.controller.saveSettings()
    }
}
