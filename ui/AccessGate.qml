pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The screen before anybody has entered.
FocusScope {
    id: gate

    required property QuorvelController controller

    readonly property real outerPadding: 34
    readonly property real formWidth: 460 + 2 * AppTheme.panelPadding

    PageScroller {
        id: scroller

        anchors.fill: parent
        content: page

        Item {
            id: page

            width: scroller.width
            height: Math.max(implicitHeight, scroller.height)
            implicitHeight: columns.implicitHeight + 2 * gate.outerPadding

            RowLayout {
                id: columns

                anchors.centerIn: parent
                width: Math.min(980, page.width - 2 * gate.outerPadding)
                spacing: 24

                ColumnLayout {
                    Layout.fillWidth: true
                    Layout.alignment: Qt.AlignVCenter
                    spacing: AppTheme.blockGap

                    BrandTile {
                        side: 86
                        iconSize: 46
                        surface.startColor: AppTheme.faded(AppTheme.neonPurple, 0.18)
                        surface.middleColor: surface.startColor
                        surface.endColor: surface.startColor
                        surface.outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.75)
                        surface.radius: 24
                    }

                    WelcomeTitleText {
                        Layout.fillWidth: true
                        Layout.maximumWidth: 392
                        text: L10n.t("auth_required_title", gate.controller.language)
                        Accessible.role: Accessible.Heading
                    }

                    Title3Text {
                        Layout.fillWidth: true
                        line: 26
                        font.weight: Font.Normal
                        color: AppTheme.textMuted
                        text: L10n.t("auth_required_body", gate.controller.language)
                    }

                    LanguageSwitch {
                        Layout.preferredWidth: 168
                        controller: gate.controller
                    }
                }

                Panel {
                    Layout.preferredWidth: gate.formWidth
                    Layout.alignment: Qt.AlignVCenter
                    contentSpacing: 14
                    Accessible.name: L10n.t("account", gate.controller.language)

                    GlassButton {
                        Layout.fillWidth: true
                        focus: true
                        iconName: "guest"
                        text: L10n.t("continue_guest", gate.controller.language)
                        onClicked: gate.controller.continueAsGuest()
                    }

                    CaptionText {
                        Layout.fillWidth: true
                        color: AppTheme.textMuted
                        text: L10n.t("guest_note", gate.controller.language)
                    }

                    CalloutText {
                        Layout.fillWidth: true
                        visible: text !== ""
                        text: gate.controller.authStatusText
                    }
                }
            }
        }
    }
}
