pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// English or Russian, for the whole interface at once.
SegmentedSwitch {
    id: languageSwitch

    required property QuorvelController controller

    labels: [L10n.shortLabel(AppLanguage.English), L10n.shortLabel(AppLanguage.Russian)]
    currentIndex: controller.language === AppLanguage.Russian ? 1 : 0
    accessibleName: L10n.t("language_switch", controller.language)
    onChosen: index => controller.setLanguage(index === 1 ? AppLanguage.Russian : AppLanguage.English)
}
