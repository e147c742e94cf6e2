import QtQuick
import Kivo.Theme

/// One setting: what it is called, what there is to know of it, and its control at the other side.
Item {
    id: row
    required property string label
    property string caption
    /// Something went wrong, as the caption tells.
    property bool isProblem: false
    default property alias control: slot.data

    /// All but the first of a group's rows have a line above them.
    readonly property bool isFirst: y === 0

    width: parent?.width ?? 0
    implicitHeight: Math.max(48, texts.implicitHeight + 2 * Theme.space.m)
    opacity: enabled ? 1 : 0.55

    Rectangle {
        anchors { left: parent.left; right: parent.right; leftMargin: Theme.space.l; rightMargin: Theme.space.l }
        visible: !row.isFirst
        height: 1
        color: Theme.colors.hairline
    }
    Column {
        id: texts
        anchors { left: parent.left; right: slot.left; leftMargin: Theme.space.l; rightMargin: Theme.space.l }
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        Label {
            width: parent.width
            text: row.label
            wrapMode: Text.Wrap
        }
        Label {
            visible: text !== ""
            width: parent.width
            text: row.caption
            size: Theme.type.caption
            leading: 1.2
            color: row.isProblem ? Theme.colors.criticalText : Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
    Row {
        id: slot
        anchors { right: parent.right; rightMargin: Theme.space.l; verticalCenter: parent.verticalCenter }
        spacing: Theme.space.m
    }
}
