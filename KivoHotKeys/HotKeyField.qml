import QtQuick
import Kivo.HotKeys
import Kivo.Theme

/// Shows a hot key, and records another one after a press.
KeyRecorder {
    id: field
    required property string name
    /// "Ctrl+Alt+T"; empty without one.
    required property string keys
    readonly property bool visualFocus: activeFocus && !byPointer
    property bool byPointer: false

    implicitWidth: 208
    implicitHeight: 28
    activeFocusOnTab: true
    onActiveFocusChanged: if (!activeFocus) byPointer = false
    Accessible.role: Accessible.Button
    Accessible.name: name
    Accessible.description: recording ? "Press the keys" : keys === "" ? "None. Records one when pressed" : keys
    Accessible.onPressAction: recording = !recording

    HoverHandler { id: hover }
    TapHandler {
        onTapped: {
            field.byPointer = true
            field.recording = !field.recording
        }
    }
    Rectangle {
        id: ground
        anchors.fill: parent
        radius: Theme.space.radius
        color: hover.hovered && !field.recording ? Theme.colors.hover : Theme.colors.card
        border.width: field.recording ? 2 : 1
        border.color: field.recording ? Theme.colors.accent : Theme.colors.outline
    }
    Label {
        anchors { left: parent.left; leftMargin: Theme.space.m; right: clear.left; verticalCenter: parent.verticalCenter }
        text: field.recording ? field.held || "Press the keys" : field.keys || "None"
        color: field.recording || field.keys === "" ? Theme.colors.secondaryText : Theme.colors.text
        Accessible.ignored: true
    }
    IconButton {
        id: clear
        anchors { right: parent.right; rightMargin: 2; verticalCenter: parent.verticalCenter }
        width: 24
        height: 24
        visible: field.keys !== "" && !field.recording
        symbol: "close"
        text: "No " + field.name.toLowerCase()
        onClicked: field.cleared()
    }
    FocusRing {}
}
