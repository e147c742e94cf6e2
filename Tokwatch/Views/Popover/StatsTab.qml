import QtQuick
import QtQuick.Templates as T
import Kivo.Theme
import Tokwatch.Popover

/// Token statistics, the chart of the reading window, and the calendar of the stored days.
Item {
    id: tab
    required property StatsView view
    property bool active: false

    readonly property bool isEmpty: view.state.emptyText !== ""

    implicitHeight: isEmpty ? nothing.implicitHeight : column.implicitHeight

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
        sentence: tab.view.state.emptyText
    }
    Flickable {
        visible: !tab.isEmpty
        anchors.fill: parent
        contentHeight: column.implicitHeight
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        T.ScrollBar.vertical: ThinScrollBar {}

        Column {
            id: column
            x: Theme.space.l
            width: parent.width - 2 * Theme.space.l
            bottomPadding: Theme.space.l
            spacing: Theme.space.m

            ChartTiles {
                width: parent.width
                tiles: tab.view.state.tiles
            }
            ChartCard {
                width: parent.width
                chart: tab.view.state.chart
            }
            HeatMapCard {
                width: parent.width
                calendar: tab.view.calendar
            }
        }
    }
}
