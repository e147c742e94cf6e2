import QtQuick
import Kivo.Theme
import Kivo.Settings

/// A settings window's content: the list of sections at the side, the chosen one's page beside it.
/// Ctrl+PgUp and Ctrl+PgDown step through the sections; Escape and Ctrl+W ask for closing,
/// Ctrl+Q for the program's end.
FocusScope {
    id: frame
    required property string name
    default property list<SettingsSection> sections
    property int currentIndex: 0
    /// Concerns all sections; empty for none.
    property string warning: ""
    signal chosen(int index)
    signal closeRequested
    signal quitRequested

    function step(distance) {
        chosen((currentIndex + distance + sections.length) % sections.length)
    }

    implicitWidth: 720
    implicitHeight: 520
    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Dialog
    Accessible.name: name
    Keys.onEscapePressed: closeRequested()

    Shortcut { sequence: "Ctrl+W"; onActivated: frame.closeRequested() }
    Shortcut { sequence: "Ctrl+Q"; onActivated: frame.quitRequested() }
    Shortcut { sequences: ["Ctrl+PgDown", "Ctrl+Tab"]; onActivated: frame.step(1) }
    Shortcut { sequences: ["Ctrl+PgUp", "Ctrl+Shift+Tab"]; onActivated: frame.step(-1) }

    Rectangle {
        anchors.fill: parent
        color: Theme.colors.canvas
    }
    Rectangle {
        id: side
        anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
        width: 184
        color: Theme.colors.card

        SectionList {
            anchors { fill: parent; margins: Theme.space.m }
            name: frame.name
            sections: frame.sections
            currentIndex: frame.currentIndex
            focus: true
            onChosen: index => frame.chosen(index)
        }
        Label {
            anchors { left: parent.left; right: parent.right; bottom: parent.bottom; margins: Theme.space.m }
            visible: text !== ""
            text: frame.warning
            size: Theme.type.caption
            color: Theme.colors.criticalText
            wrapMode: Text.Wrap
        }
        Rectangle {
            anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
            width: 1
            color: Theme.colors.hairline
        }
    }

    Item {
        anchors { left: side.right; right: parent.right; top: parent.top; bottom: parent.bottom }

        Repeater {
            model: frame.sections.length
            // A page comes into being when it is first looked at, and keeps its place afterwards.
            Loader {
                required property int index
                anchors.fill: parent
                active: visible || status === Loader.Ready
                visible: index === frame.currentIndex
                sourceComponent: frame.sections[index].page
            }
        }
    }
}
