import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// The rows, as many as there are. Arrow keys, Home, End, Page Up and Page Down move through them.
Rectangle {
    id: table
    required property var rows
    /// Said below the last row, where it is scrolled to.
    property string notes
    readonly property int rowHeight: Theme.type.body + Theme.type.caption + 28
    readonly property int naturalHeight: list.count * rowHeight + 2 * edge
    readonly property int edge: Theme.space.xs
    readonly property alias count: list.count
    property Item hoveredRow: null
    property alias currentIndex: list.currentIndex
    signal copyWanted

    color: Theme.colors.card
    radius: Theme.space.cardRadius
    border.width: 1
    border.color: Theme.colors.hairline

    ListView {
        id: list
        readonly property int page: Math.max(1, Math.floor(height / table.rowHeight) - 1)

        function moveTo(index) {
            currentIndex = Math.max(0, Math.min(count - 1, index))
        }

        anchors.fill: parent
        anchors.topMargin: table.edge
        anchors.bottomMargin: table.edge
        clip: true
        model: table.rows
        reuseItems: true
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: 0
        activeFocusOnTab: count > 0
        keyNavigationEnabled: false
        T.ScrollBar.vertical: ThinScrollBar {}
        Accessible.role: Accessible.List
        Accessible.name: "Breakdown"

        Keys.onPressed: event => {
            event.accepted = true
            if (event.matches(StandardKey.Copy)) {
                table.copyWanted()
                return
            }
            switch (event.key) {
            case Qt.Key_Up: moveTo(currentIndex - 1); break
            case Qt.Key_Down: moveTo(currentIndex + 1); break
            case Qt.Key_PageUp: moveTo(currentIndex - page); break
            case Qt.Key_PageDown: moveTo(currentIndex + page); break
            case Qt.Key_Home: moveTo(0); break
            case Qt.Key_End: moveTo(count - 1); break
            default: event.accepted = false
            }
        }

        footer: Item {
            width: ListView.view.width
            height: table.notes === "" ? 0 : said.implicitHeight
            Label {
                id: said
                width: parent.width
                padding: Theme.space.l
                text: table.notes
                size: Theme.type.caption
                color: Theme.colors.secondaryText
                wrapMode: Text.Wrap
            }
        }
        delegate: BreakdownDelegate {
            width: ListView.view.width
            height: table.rowHeight
            isCurrent: ListView.isCurrentItem && ListView.view.activeFocus
            HoverHandler {
                onHoveredChanged: table.hoveredRow = hovered ? parent : table.hoveredRow === parent ? null : table.hoveredRow
            }
        }
    }

    // One for all rows, for the names that are too long for theirs, or leave something out.
    HoverTip {
        readonly property string hint: table.hoveredRow?.row.hint ?? ""

        parent: table.hoveredRow ?? table
        text: hint || (table.hoveredRow?.row.title ?? "")
        wanted: hint !== "" || (table.hoveredRow?.isShortened ?? false)
        widest: table.width
    }
}
