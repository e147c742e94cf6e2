import QtQuick
import Kivo.Theme

/// Rows that belong together, with a line between each two, a heading above and a note below.
Column {
    id: group
    property string title
    property string note
    default property alias content: rows.data

    width: parent?.width ?? 0
    spacing: Theme.space.s
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    Label {
        visible: text !== ""
        width: parent.width
        leftPadding: Theme.space.xs
        text: group.title
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
    }
    Rectangle {
        width: parent.width
        height: rows.height
        color: Theme.colors.card
        radius: Theme.space.cardRadius
        border.width: 1
        border.color: Theme.colors.hairline

        Column {
            id: rows
            width: parent.width
        }
    }
    Label {
        visible: text !== ""
        anchors { left: parent.left; right: parent.right; margins: Theme.space.xs }
        text: group.note
        size: Theme.type.caption
        leading: 1.2
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
}
