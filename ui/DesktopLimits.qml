pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What this desktop does not let the program do, and why; not there where everything works.
Panel {
    id: limits

    required property QuorvelController controller
    required property DesktopSupport desktopSupport

    visible: !desktopSupport.applications.works || !desktopSupport.idle.works || !desktopSupport.browsers.works
             || !desktopSupport.statusItem.works || unseenBrowsers.count > 0
    title: L10n.t("desktop_limits", controller.language)
    subtitle: L10n.t("desktop_limits_subtitle", controller.language)

    StatusLine {
        Layout.fillWidth: true
        visible: value !== ""
        label: L10n.t("desktop_applications", limits.controller.language)
        value: L10n.reason(limits.desktopSupport.applications, limits.controller.language)
    }

    StatusLine {
        Layout.fillWidth: true
        visible: value !== ""
        label: L10n.t("idle", limits.controller.language)
        value: L10n.reason(limits.desktopSupport.idle, limits.controller.language)
    }

    StatusLine {
        Layout.fillWidth: true
        visible: value !== ""
        label: L10n.t("desktop_browsers", limits.controller.language)
        value: L10n.reason(limits.desktopSupport.browsers, limits.controller.language)
    }

    Repeater {
        id: unseenBrowsers

        model: limits.desktopSupport.unseenBrowsers

        StatusLine {
            required property browserCoverage modelData

            Layout.fillWidth: true
            label: modelData.browser
            value: L10n.advice(modelData, limits.controller.language)
        }
    }

    StatusLine {
        Layout.fillWidth: true
        visible: value !== ""
        label: L10n.t("desktop_status_item", limits.controller.language)
        value: L10n.reason(limits.desktopSupport.statusItem, limits.controller.language)
    }
}
