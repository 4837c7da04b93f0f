pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The study character, and where XP comes from.
SectionPage {
    id: workspace

    section: ProductSection.Progress

    ColumnLayout {
        Layout.fillWidth: true
        spacing: AppTheme.blockGap

        CharacterPanel {
            Layout.fillWidth: true
            controller: workspace.controller
        }

        ProgressionPanel {
            Layout.fillWidth: true
            controller: workspace.controller
            narrow: workspace.narrow
        }
    }
}
