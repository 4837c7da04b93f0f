pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The sidebar and the page beside it.
FocusScope {
    id: layout

    required property QuorvelController controller
    required property DesktopSupport desktopSupport

    Sidebar {
        id: sidebar

        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        controller: layout.controller
    }

    PageScroller {
        id: scroller

        anchors.left: sidebar.right
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        focus: true
        content: page

        Item {
            id: page

            width: scroller.width
            implicitHeight: column.implicitHeight + 2 * AppTheme.pageMargin

            ColumnLayout {
                id: column

                anchors.left: parent.left
                anchors.right: parent.right
                anchors.top: parent.top
                anchors.margins: AppTheme.pageMargin
                spacing: AppTheme.titleGap

                CommandBar {
                    Layout.fillWidth: true
                    controller: layout.controller
                    title: L10n.t("focus_title", layout.controller.language)
                    subtitle: L10n.t("focus_subtitle", layout.controller.language)
                }

                FocusPage {
                    Layout.fillWidth: true
                    controller: layout.controller
                    desktopSupport: layout.desktopSupport
                }
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
}
