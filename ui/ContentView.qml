pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The root view: the gate until somebody has entered, then the working layout.
FocusScope {
    id: view

    required property QuorvelController controller
    required property DesktopSupport desktopSupport

    property int selection: ProductSection.Focus ///< the section that is shown

    readonly property bool entered: controller.accessMode !== AccessMode.None

    focus: true

    Binding {
        target: AppTheme
        property: "reducedMotion"
        value: view.desktopSupport.reducedMotion
    }

    Connections {
        target: view.Window.window

        function onVisibilityChanged() {
            const visibility = view.Window.visibility;
            AppTheme.seen = visibility !== Window.Hidden && visibility !== Window.Minimized;
        }
    }

    AppGround {
        anchors.fill: parent
    }

    Loader {
        anchors.fill: parent
        active: !view.entered // most starts never show it
        focus: active
        Component.onCompleted: setSource("AccessGate.qml", {"controller": view.controller})
    }

    // Kept while the gate is up, so that it returns as it was left.
    WorkingLayout {
        anchors.fill: parent
        visible: view.entered
        enabled: visible
        focus: visible
        controller: view.controller
        desktopSupport: view.desktopSupport
        selection: view.selection
        onChosen: section => view.selection = section
    }

    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }
}
