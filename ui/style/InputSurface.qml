pragma ComponentBehavior: Bound

import QtQuick
import Quorvel.Ui

/// The shape of a field that is typed into, with a halo while it has the keyboard.
Item {
    id: input

    required property bool focused

    Surface {
        anchors.margins: -3
        visible: input.focused
        radius: 19
        outlineWidth: 3
        outlineColor: AppTheme.faded(AppTheme.neonPurple, 0.25)
    }

    Surface {
        radius: 16
        startColor: AppTheme.glassFill
        outlineColor: input.focused ? AppTheme.faded(AppTheme.neonPurple, 0.9)
                                    : AppTheme.faded(AppTheme.glassStroke, 0.62)
    }
}
