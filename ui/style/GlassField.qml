pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Controls.Basic
import Quorvel.Ui

/// A single line to type into. It shows `draft` and tells each change by hand, or by a tool in place of the
/// hand, by `edited`; the text itself is its owner's, so that it follows when the owner changes it.
FocusScope {
    id: field

    required property string draft
    required property string accessibleName
    property string placeholder: ""

    property bool following: false ///< while the text is put in from outside

    signal edited(string text)
    signal accepted()

    implicitWidth: 160
    implicitHeight: AppTheme.controlHeight

    function follow(): void {
        if (input.text === draft)
            return;
        following = true;
        input.text = draft;
        following = false;
    }

    onDraftChanged: follow()
    Component.onCompleted: follow()

    InputSurface {
        anchors.fill: parent
        focused: input.activeFocus
    }

    TextField {
        id: input

        anchors.fill: parent
        focus: true
        leftPadding: 13
        rightPadding: 13
        topPadding: 10
        bottomPadding: 10
        verticalAlignment: TextInput.AlignVCenter
        clip: true
        background: null
        color: AppTheme.textPrimary
        selectionColor: AppTheme.selection
        selectedTextColor: AppTheme.textPrimary
        placeholderText: field.placeholder
        placeholderTextColor: AppTheme.placeholder
        font.pixelSize: 14
        font.letterSpacing: -0.1

        Accessible.name: field.accessibleName

        onTextChanged: {
            if (!field.following)
                field.edited(text);
        }
        onAccepted: field.accepted()
    }
}
