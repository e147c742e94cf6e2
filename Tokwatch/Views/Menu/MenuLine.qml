import QtQuick
import Kivo.Theme

/// One entry of a menu, or the line between two.
Item {
    id: line
    required property var row
    required property bool isCurrent
    readonly property bool isSeparator: row.label === ""
    signal pointed
    signal chosen

    implicitHeight: isSeparator ? 9 : 28
    Accessible.role: isSeparator ? Accessible.Separator : Accessible.MenuItem
    Accessible.name: row.label
    Accessible.onPressAction: chosen()

    Rectangle {
        visible: line.isSeparator
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        height: 1
        color: Theme.colors.hairline
    }
    Rectangle {
        visible: line.isCurrent
        anchors.fill: parent
        radius: Theme.space.radius - 2
        color: Theme.colors.accent
    }
    Label {
        anchors { left: parent.left; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
        text: line.row.label
        color: line.isCurrent ? Theme.colors.onAccent : Theme.colors.text
        Accessible.ignored: true
    }
    Label {
        anchors { right: parent.right; rightMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
        text: line.row.shortcut
        size: Theme.type.caption
        color: line.isCurrent ? Theme.colors.onAccent : Theme.colors.secondaryText
        Accessible.ignored: true
    }
    HoverHandler { onHoveredChanged: if (hovered && !line.isSeparator) line.pointed() }
    TapHandler { onTapped: line.chosen() }
}
