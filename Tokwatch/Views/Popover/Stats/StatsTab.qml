import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Stats

/// Token statistics, the chart of the reading window, and the calendar of the stored days.
Item {
    id: tab
    required property StatsView view
    property bool active: false

    readonly property bool isEmpty: view.state.emptyText !== ""

    implicitHeight: isEmpty ? nothing.implicitHeight : column.naturalHeight

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
    function scroll(key) {
        return !isEmpty && column.scroll(key)
    }
    ScrollColumn {
        id: column
        visible: !tab.isEmpty
        anchors.fill: parent
        anchors.topMargin: -ringRoom

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
