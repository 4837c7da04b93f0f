pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// One of a few choices, side by side. Holds no choice itself: it shows `currentIndex` and asks by `chosen`.
FocusScope {
    id: control

    required property list<string> labels
    required property int currentIndex
    required property string accessibleName

    signal chosen(int index)

    implicitHeight: 34

    Accessible.role: Accessible.Grouping
    Accessible.name: accessibleName

    Surface {
        radius: 12
        startColor: Qt.rgba(1, 1, 1, 0.06)
        outlineColor: AppTheme.faded(AppTheme.glassStroke, 0.62)
    }

    Row {
        anchors.fill: parent
        anchors.margins: 4 // the outline and the inset of 3

        Repeater {
            model: control.labels

            RadioButton { // by its role; the choice itself is the owner's
                id: segment

                required property int index
                required property string modelData

                readonly property bool current: index === control.currentIndex

                width: parent ? (parent as Row).width / control.labels.length : 0
                height: parent ? (parent as Row).height : 0
                text: modelData
                checked: current
                indicator: null
                padding: 0
                hoverEnabled: false
                focusPolicy: Qt.StrongFocus
                activeFocusOnTab: true

                Accessible.name: text
                Keys.onReturnPressed: segment.clicked()
                Keys.onEnterPressed: segment.clicked()
                Keys.onLeftPressed: control.chosen(Math.max(index - 1, 0))
                Keys.onRightPressed: control.chosen(Math.min(index + 1, control.labels.length - 1))

                onClicked: control.chosen(index)

                background: Item {
                    Surface {
                        radius: 9
                        startColor: Qt.rgba(1, 1, 1, segment.current ? 0.15 : 0)
                        outlineWidth: 0
                    }

                    FocusRing {
                        anchors.margins: 0
                        controlRadius: 5
                        visible: segment.visualFocus
                    }
                }

                contentItem: Text {
                    text: segment.text
                    textFormat: Text.PlainText
                    color: segment.current ? AppTheme.textPrimary : AppTheme.textMuted
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    font.letterSpacing: 0.2
                }
            }
        }
    }
}
