pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// Several lines to type into, with a scroller of their own. It shows `draft` and tells each change by hand by
/// `edited`, as GlassField does. Tab leaves it.
FocusScope {
    id: area

    required property string draft
    required property string accessibleName

    property bool following: false ///< while the text is put in from outside

    signal edited(string text)

    implicitHeight: 196

    function follow(): void {
        if (input.text === draft)
            return;
        following = true; // the text may come out otherwise than it went in, and that is nobody's edit
        input.text = draft;
        following = false;
    }

    function leave(forward: bool): void {
        input.nextItemInFocusChain(forward).forceActiveFocus(forward ? Qt.TabFocusReason
                                                                     : Qt.BacktabFocusReason);
    }

    onDraftChanged: follow()
    Component.onCompleted: follow()

    InputSurface {
        anchors.fill: parent
        focused: input.activeFocus
    }

    Flickable {
        anchors.fill: parent
        anchors.topMargin: 10
        anchors.bottomMargin: 10
        anchors.rightMargin: 4
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height

        ScrollBar.vertical: ThinScrollBar {}

        TextArea.flickable: TextArea {
            id: input

            focus: true
            leftPadding: 13
            rightPadding: 13
            topPadding: 0
            bottomPadding: 0
            background: null
            color: AppTheme.textPrimary
            selectionColor: AppTheme.selection
            selectedTextColor: AppTheme.textPrimary
            textFormat: TextEdit.PlainText
            wrapMode: TextEdit.Wrap
            selectByMouse: true
            font.pixelSize: 14
            font.letterSpacing: -0.1

            LineGrid {
                document: input.textDocument
                line: 22
            }

            Accessible.name: area.accessibleName
            Keys.priority: Keys.BeforeItem
            Keys.onTabPressed: area.leave(true)
            Keys.onBacktabPressed: area.leave(false)

            onTextChanged: {
                if (!area.following)
                    area.edited(text);
            }
        }
    }
}
