pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Layouts
import Quorvel.Ui

/// What this desktop lets the program see and do, in each browser too, and what helps where it does not.
Panel {
    id: panel

    required property QuorvelController controller
    required property DesktopSupport desktopSupport

    title: L10n.t("desktop_support", controller.language)
    subtitle: L10n.t("desktop_support_subtitle", controller.language)
    contentSpacing: AppTheme.statusGap

    SupportLine {
        Layout.fillWidth: true
        label: L10n.t("desktop_applications", panel.controller.language)
        works: panel.desktopSupport.applications.works
        message: works ? L10n.t("desktop_works_applications", panel.controller.language)
                       : L10n.reason(panel.desktopSupport.applications, panel.controller.language)
    }

    SupportLine {
        Layout.fillWidth: true
        divided: true
        label: L10n.t("idle", panel.controller.language)
        works: panel.desktopSupport.idle.works
        message: works ? L10n.t("desktop_works_idle", panel.controller.language)
                       : L10n.reason(panel.desktopSupport.idle, panel.controller.language)
    }

    SupportLine {
        Layout.fillWidth: true
        divided: true
        label: L10n.t("desktop_status_item", panel.controller.language)
        works: panel.desktopSupport.statusItem.works
        message: works ? L10n.t("desktop_works_status_item", panel.controller.language)
                       : L10n.reason(panel.desktopSupport.statusItem, panel.controller.language)
    }

    SupportLine {
        Layout.fillWidth: true
        divided: true
        visible: !works // that what is done stays is no news
        label: L10n.t("desktop_preferences", panel.controller.language)
        works: panel.desktopSupport.preferences.works
        message: L10n.reason(panel.desktopSupport.preferences, panel.controller.language)
    }

    SupportLine {
        Layout.fillWidth: true
        divided: true
        visible: !panel.desktopSupport.browsers.works || browsers.count === 0
        label: L10n.t("desktop_browsers", panel.controller.language)
        works: panel.desktopSupport.browsers.works
        message: works ? L10n.t("desktop_no_browser", panel.controller.language)
                       : L10n.reason(panel.desktopSupport.browsers, panel.controller.language)
    }

    Repeater {
        id: browsers

        model: panel.desktopSupport.browserCoverage

        SupportLine {
            required property browserCoverage modelData

            Layout.fillWidth: true
            divided: true
            label: modelData.browser
            works: modelData.connected
            message: L10n.advice(modelData, panel.controller.language)
        }
    }
}
