import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Models

/// The breakdown of the reading window by model or by day.
Item {
    id: tab
    required property ModelsView view
    property bool active: false
    readonly property bool isEmpty: view.emptyText !== ""
    /// Where few rows fit, what is below them is scrolled with them.
    readonly property bool isLow: height < 6 * table.rowHeight

    implicitHeight: isEmpty ? nothing.implicitHeight : header.height + Theme.space.m + table.naturalHeight + notes.natural + Theme.space.l

    Binding {
        target: tab.view
        property: "active"
        value: tab.active
    }
    Component.onDestruction: if (view) view.active = false

    EmptyState {
        id: nothing
        visible: tab.isEmpty
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        sentence: tab.view.emptyText
    }
    Item {
        id: header
        visible: !tab.isEmpty
        x: Theme.space.l
        width: parent.width - 2 * Theme.space.l
        height: 28

        SegmentedControl {
            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            small: true
            name: "Breakdown"
            segments: [{ value: Segment.ByModel, text: "By model" }, { value: Segment.ByDay, text: "By day" }]
            value: tab.view.mode
            onChosen: value => {
                tab.view.mode = value
                table.currentIndex = 0
            }
        }
        BreakdownCopy {
            id: copy
            anchors.right: parent.right
            onTextWanted: tab.copyText()
            onCsvWanted: {
                tab.view.copyCSV()
                confirm()
            }
        }
    }
    function copyText() {
        view.copyText()
        copy.confirm()
    }
    BreakdownTable {
        id: table
        visible: !tab.isEmpty
        anchors { left: header.left; right: header.right; top: header.bottom; topMargin: Theme.space.m }
        height: Math.max(0, Math.min(naturalHeight, tab.height - y - notes.room - Theme.space.l))
        rows: tab.view.rows
        notes: tab.isLow ? tab.view.notes : ""
        onCopyWanted: tab.copyText()
    }
    Label {
        id: notes
        visible: !tab.isEmpty && !tab.isLow
        anchors { left: header.left; right: header.right; top: table.bottom }
        readonly property int natural: text === "" ? 0 : implicitHeight
        readonly property int room: visible ? natural : 0
        topPadding: Theme.space.m
        text: tab.view.notes
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
}
