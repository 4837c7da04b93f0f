pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// All sections. Scrolls by itself where the sidebar is too low for them.
Flickable {
    id: list

    required property QuorvelController controller
    required property int selection

    signal chosen(int section)

    implicitHeight: column.implicitHeight
    contentHeight: column.implicitHeight
    boundsBehavior: Flickable.StopAtBounds
    interactive: contentHeight > height
    clip: interactive

    Accessible.role: Accessible.Grouping
    Accessible.name: L10n.t("section_list", controller.language)

    Column {
        id: column

        width: list.width
        spacing: 6

        Repeater {
            model: Sections.all

            SidebarButton {
                required property int modelData

                width: column.width
                iconName: Sections.iconName(modelData)
                text: Sections.title(modelData, list.controller.language)
                current: modelData === list.selection
                onClicked: list.chosen(modelData)
            }
        }
    }
}
