pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// Who uses the program, and the way out. The button goes below a name that leaves it no room.
GridLayout {
    id: account

    required property QuorvelController controller

    readonly property bool roomy: name.implicitWidth + button.implicitWidth + columnSpacing <= width

    columns: roomy ? 2 : 1
    columnSpacing: 12
    rowSpacing: 8

    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2

        CaptionText {
            Layout.fillWidth: true
            font.weight: Font.Bold
            color: AppTheme.textMuted
            text: L10n.t("account", account.controller.language)
        }

        CalloutText {
            id: name

            Layout.fillWidth: true
            font.weight: Font.Bold
            text: account.controller.hasSignedInEmail ? account.controller.signedInEmail
                : account.controller.accessMode === AccessMode.Guest ? "Guest" : "-"
        }
    }

    GlassButton {
        id: button

        Layout.fillWidth: !account.roomy
        text: L10n.t("sign_out", account.controller.language)
        onClicked: account.controller.signOut()
    }
}
