pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// How often a card was known and missed; the same in both languages.
CaptionText {
    required property double correct
    required property double missed

    color: AppTheme.textMuted
    text: "OK " + correct + " / Miss " + missed
}
