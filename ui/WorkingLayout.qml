pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The sidebar and the page of the selected section beside it.
FocusScope {
    id: layout

    required property QuorvelController controller
    required property DesktopSupport desktopSupport
    required property int selection

    property bool seen: false ///< whether a frame of the window has been shown

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
        readonly property url page: {
            switch (layout.selection) {
            case ProductSection.Progress:
                return "ProgressWorkspace.qml";
            case ProductSection.Coach:
                return "CoachWorkspace.qml";
            case ProductSection.Cards:
                return "CardsWorkspace.qml";
            case ProductSection.Plan:
                return "PlanWorkspace.qml";
            case ProductSection.Rules:
                return "RulesWorkspace.qml";
            case ProductSection.Activity:
                return "ActivityWorkspace.qml";
            default:
                return "FocusDashboard.qml";
            }
        }

        anchors.left: sidebar.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        focus: true
        // By address: a Loader of Qt 6.4 cannot make a component that is bound to its file.
        onPageChanged: {
            const given = {"controller": layout.controller, "width": width, "height": height};
            if (layout.selection === ProductSection.Rules)
                given["desktopSupport"] = layout.desktopSupport;
            if (layout.selection === ProductSection.Focus)
                given["whole"] = Qt.binding(() => layout.seen);
            setSource(page, given);
        }
    }

    Connections {
        enabled: !layout.seen
        target: layout.Window.window

        function onFrameSwapped() {
            layout.seen = true;
        }
    }

    Shortcut {
        sequence: "Ctrl+L"
        autoRepeat: false
        enabled: layout.enabled
        onActivated: layout.controller.lockNow()
    }

    Shortcut {
        sequence: "Ctrl+S"
        autoRepeat: false
        enabled: layout.enabled && layout.selection === ProductSection.Focus && layout.controller.canStartStudy
        onActivated: layout.controller.startStudy()
    }

    Shortcut {
        sequence: "Ctrl+Shift+S"
        autoRepeat: false
        enabled: layout.enabled && layout.selection === ProductSection.Rules
        onActivated: layout.controller.saveSettings()
    }
}
