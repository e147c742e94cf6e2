import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Models
import Tokwatch.Popover.Range

/// The breakdown of the chosen days by model, day or project.
Item {
    id: tab
    required property ModelsView view
    property bool active: false
    readonly property bool isEmpty: view.state.emptyText !== ""
    readonly property bool isWaiting: view.state.isWaiting
    /// Where few of the rows fit, what is below them is scrolled with them.
    readonly property bool isLow: height < implicitHeight && height < 6 * table.rowHeight

    // What is waited for takes the place of what was there: a window that shrinks to grow again disturbs.
    Binding on implicitHeight {
        when: !tab.isWaiting
        value: header.height + (tab.isEmpty ? nothing.implicitHeight : Theme.space.m + table.naturalHeight + notes.natural + Theme.space.l)
        restoreMode: Binding.RestoreNone
    }

    Binding {
        target: tab.view
        property: "active"
        value: tab.active
    }
    Binding {
        target: tab.view
        property: "inSight"
        value: tab.Window.visibility !== Window.Hidden
    }
    Component.onDestruction: if (view) view.active = false
    Connections {
        target: tab.view.range
        function onDaysChanged() { table.currentIndex = 0 }
    }

    EmptyState {
        id: nothing
        visible: tab.isEmpty
        anchors.verticalCenter: parent.verticalCenter
        anchors.verticalCenterOffset: header.height / 2
        width: parent.width
        sentence: tab.view.state.emptyText
    }
    Item {
        id: header
        x: Theme.space.l
        width: parent.width - 2 * Theme.space.l
        height: 28

        SegmentedControl {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            small: true
            name: "Breakdown"
            segments: [
                { value: Segment.ByModel, text: "By model" },
                { value: Segment.ByDay, text: "By day" },
                { value: Segment.ByProject, text: "By project" }
            ]
            value: tab.view.mode
            onChosen: value => {
                tab.view.mode = value
                table.currentIndex = 0
            }
        }
        RangeChoice {
            anchors.right: copy.left
            anchors.rightMargin: Theme.space.s
            anchors.verticalCenter: parent.verticalCenter
            width: 84
            isBox: true
            range: tab.view.range
        }
        BreakdownCopy {
            id: copy
            enabled: table.count > 0
            anchors.right: parent.right
            onTextWanted: tab.copyText()
            onCsvWanted: {
                tab.view.copyCSV()
                confirm()
            }
            onPasteWanted: tab.view.pasteText()
        }
    }
    function copyText() {
        view.copyText()
        copy.confirm()
    }
    ProgressLine {
        visible: tab.view.reading.isShown
        anchors { left: header.left; right: header.right }
        y: header.height + (Theme.space.m - height) / 2
        name: tab.view.reading.text
        fraction: tab.view.reading.fraction
    }
    BreakdownTable {
        id: table
        visible: !tab.isEmpty
        anchors { left: header.left; right: header.right; top: header.bottom; topMargin: Theme.space.m }
        readonly property int room: tab.height - y - notes.room - Theme.space.l
        height: Math.max(0, tab.isWaiting ? room : Math.min(naturalHeight, room))
        rows: tab.view.rows
        notes: tab.isLow ? tab.view.state.notes : ""
        onCopyWanted: tab.copyText()

        Label {
            visible: tab.isWaiting
            anchors.centerIn: parent
            text: tab.view.reading.text
            color: Theme.colors.secondaryText
        }
    }
    Label {
        id: notes
        visible: !tab.isEmpty && !tab.isLow
        anchors { left: header.left; right: header.right; top: table.bottom }
        readonly property int natural: text === "" ? 0 : implicitHeight
        readonly property int room: visible ? natural : 0
        topPadding: Theme.space.m
        text: tab.view.state.notes
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
}
