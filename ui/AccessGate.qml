pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// The screen before anybody has entered.
FocusScope {
    id: gate

    required property QuorvelController controller

    focus: true

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

            Item {
                id: columns

                anchors.centerIn: parent
                width: Math.min(980, page.width - 2 * gate.outerPadding)
                implicitHeight: Math.max(brand.height, form.height)

                Column {
                    id: brand

                    anchors.left: parent.left
                    anchors.right: form.left
                    anchors.rightMargin: 60
                    anchors.verticalCenter: parent.verticalCenter
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
                        width: Math.min(392, brand.width)
                        text: L10n.t("auth_required_title", gate.controller.language)
                        Accessible.role: Accessible.Heading
                    }

                    Title3Text {
                        width: brand.width
                        line: 26
                        font.weight: Font.Normal
                        color: AppTheme.textMuted
                        text: L10n.t("auth_required_body", gate.controller.language)
                    }

                    LanguageSwitch {
                        width: 168
                        controller: gate.controller
                    }
                }

                Panel {
                    id: form

                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    width: gate.formWidth
                    height: implicitHeight
                    contentSpacing: 14
                    Accessible.name: L10n.t("account", gate.controller.language)

                    GlassField {
                        Layout.fillWidth: true
                        focus: true
                        placeholder: L10n.t("email", gate.controller.language)
                        accessibleName: placeholder
                        draft: gate.controller.authEmailText
                        onEdited: text => gate.controller.authEmailText = text
                        onAccepted: gate.controller.requestEmailCode()
                    }

                    RowLayout {
                        Layout.fillWidth: true
                        spacing: 10

                        GlassField {
                            Layout.fillWidth: true
                            placeholder: L10n.t("verification_code", gate.controller.language)
                            accessibleName: placeholder
                            draft: gate.controller.authCodeText
                            onEdited: text => gate.controller.authCodeText = text
                            onAccepted: gate.controller.verifyEmailCode()
                        }

                        GlassButton {
                            text: L10n.t("send_code", gate.controller.language)
                            onClicked: gate.controller.requestEmailCode()
                        }
                    }

                    PrimaryButton {
                        Layout.fillWidth: true
                        iconName: "check-seal-filled"
                        text: L10n.t("verify_email", gate.controller.language)
                        onClicked: gate.controller.verifyEmailCode()
                    }

                    Rule {
                        Layout.topMargin: 4
                        Layout.bottomMargin: 4
                    }

                    RowLayout {
                        Layout.fillWidth: true
                        spacing: 10

                        GlassButton {
                            Layout.fillWidth: true
                            Layout.preferredWidth: 1
                            iconName: "globe"
                            text: L10n.t("google_sign_in", gate.controller.language)
                            onClicked: gate.controller.openOAuth("google")
                        }

                        GlassButton {
                            Layout.fillWidth: true
                            Layout.preferredWidth: 1
                            iconName: "network"
                            text: L10n.t("yandex_sign_in", gate.controller.language)
                            onClicked: gate.controller.openOAuth("yandex")
                        }
                    }

                    GlassButton {
                        Layout.fillWidth: true
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
