import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Range
import Tokwatch.Popover.Stats

/// Token statistics and the chart of the chosen days, and the calendar of the stored days.
Item {
    id: tab
    required property StatsView view
    property bool active: false

    readonly property bool isEmpty: view.state.emptyText !== ""

    implicitHeight: column.naturalHeight

    Binding {
        target: tab.view
        property: "active"
        value: tab.active
    }
    Component.onDestruction: if (view) view.active = false

    function scroll(key) {
        return column.scroll(key)
    }
    ScrollColumn {
        id: column
        anchors.fill: parent
        anchors.topMargin: -ringRoom

        Item {
            width: parent.width
            height: 28
            RangeChoice {
                anchors.verticalCenter: parent.verticalCenter
                range: tab.view.range
            }
            CopyButton {
                id: copy
                anchors.right: parent.right
                name: "Copy as a picture"
                enabled: cards.height > 0
                onClicked: cards.grabToImage(picture => {
                    tab.view.copyPicture(picture.image, Theme.colors.canvas)
                    copy.confirm()
                }, Qt.size(cards.width * Screen.devicePixelRatio, cards.height * Screen.devicePixelRatio))
            }
            ProgressLine {
                visible: tab.view.reading.isShown
                y: parent.height + (Theme.space.m - height) / 2
                width: parent.width
                name: tab.view.reading.text
                fraction: tab.view.reading.fraction
            }
        }
        EmptyState {
            visible: tab.isEmpty
            width: parent.width
            sentence: tab.view.state.emptyText
        }
        Column {
            id: cards
            width: parent.width
            spacing: Theme.space.m

            ChartTiles {
                visible: !tab.isEmpty
                width: parent.width
                tiles: tab.view.state.tiles
            }
            ChartCard {
                visible: !tab.isEmpty
                width: parent.width
                chart: tab.view.state.chart
            }
            HeatMapCard {
                visible: tab.view.state.hasCalendar
                width: parent.width
                calendar: tab.view.calendar
            }
        }
    }
}
