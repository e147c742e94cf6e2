import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A section's page: its title and what it holds, scrolled where the window is too low. What the
/// keyboard moves to comes into view. `pinned` stays below the title whatever is scrolled.
FocusScope {
    id: page
    required property string title
    property alias pinned: head.data
    default property alias content: column.data

    Accessible.role: Accessible.Pane
    Accessible.name: title

    Column {
        id: head
        anchors { horizontalCenter: parent.horizontalCenter; top: parent.top; topMargin: Theme.space.xl - Theme.space.xs }
        width: column.width
        bottomPadding: Theme.space.l
        spacing: Theme.space.l

        Label {
            width: parent.width
            text: page.title
            size: Theme.type.figure
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
    }
    Rectangle {
        anchors { left: head.left; right: head.right; top: head.bottom }
        visible: view.contentY > 0
        height: 1
        color: Theme.colors.hairline
    }
    Flickable {
        id: view
        anchors { left: parent.left; right: parent.right; top: head.bottom; bottom: parent.bottom }
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        T.ScrollBar.vertical: ThinScrollBar {}

        readonly property Item focused: Window.activeFocusItem
        onFocusedChanged: {
            for (let item = focused; item; item = item.parent)
                if (item === column)
                    return show(focused)
        }
        function show(item) {
            const top = item.mapToItem(column, 0, 0).y - Theme.space.xl
            const bottom = top + item.height + 2 * Theme.space.xl
            const furthest = Math.max(0, contentHeight - height)
            if (top < contentY)
                contentY = Math.max(0, top)
            else if (bottom > contentY + height)
                contentY = Math.min(furthest, bottom - height)
        }

        Column {
            id: column
            // Wider, a control would be far from its name.
            readonly property real widest: 720
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(parent.width - 2 * Theme.space.xl, widest)
            bottomPadding: Theme.space.xl
            spacing: Theme.space.l
        }
    }
}
