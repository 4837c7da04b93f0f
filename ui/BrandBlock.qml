pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The product's sign, name and kind.
RowLayout {
    id: brand

    required property QuorvelController controller

    spacing: 12

    BrandTile {}

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 0

        Title2Text {
            text: "Quorvel"
        }

        CaptionText {
            Layout.fillWidth: true
            color: AppTheme.textMuted
            text: L10n.t("focus_blocker", brand.controller.language)
        }
    }
}
