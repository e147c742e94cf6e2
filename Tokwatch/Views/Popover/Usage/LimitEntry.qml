import QtQuick
import QtQuick.Templates as T
import Kivo.Theme
import Tokwatch.Popover.Usage

/// One limit, which opens to show how it was used up so far where that is known.
Column {
    id: entry
    required property var limit
    readonly property bool opens: !limit.burnUp.isEmpty
    readonly property string label: limit.label
    property bool isOpen: false

    spacing: Theme.space.s
    onLabelChanged: isOpen = false

    T.AbstractButton {
        id: button
        width: parent.width
        height: bar.implicitHeight
        focusPolicy: entry.opens ? Qt.TabFocus : Qt.NoFocus
        Accessible.ignored: !entry.opens
        Accessible.name: entry.limit.spoken
        Accessible.description: entry.isOpen ? "Hides how it was used when pressed" : "Shows how it was used when pressed"
        Accessible.onPressAction: button.clicked()
        Keys.onReturnPressed: button.clicked()
        Keys.onEnterPressed: button.clicked()
        onClicked: entry.isOpen = entry.opens && !entry.isOpen
        HoverHandler { cursorShape: entry.opens ? Qt.PointingHandCursor : Qt.ArrowCursor }

        contentItem: LimitBar {
            id: bar
            limit: entry.limit
            opens: entry.opens
            isOpen: entry.isOpen
            Accessible.ignored: entry.opens
        }
        background: Item { readonly property real radius: Theme.space.radius }
        FocusRing { distance: 6 }
    }

    Column {
        visible: entry.isOpen && entry.opens
        width: parent.width
        spacing: Theme.space.xs
        Accessible.role: Accessible.Chart
        Accessible.name: "Use against time"
        Accessible.description: entry.limit.paceText

        BurnUpPlot {
            width: parent.width
            height: 64
            line: entry.limit.burnUp
            colors: Theme.colors
            stroke: bar.fill
            mirrored: LayoutMirroring.enabled
        }
        Item {
            width: parent.width
            height: begin.implicitHeight
            Label {
                id: begin
                anchors.left: parent.left
                text: entry.limit.burnUp.beginText
                size: Theme.type.caption
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
            Label {
                anchors.horizontalCenter: parent.horizontalCenter
                text: entry.limit.paceText
                size: Theme.type.caption
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
            Label {
                anchors.right: parent.right
                text: entry.limit.burnUp.endText
                size: Theme.type.caption
                color: Theme.colors.secondaryText
                Accessible.ignored: true
            }
        }
    }
}
