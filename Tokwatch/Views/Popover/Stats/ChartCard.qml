import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Stats

/// Usage by day, stacked by assistant. The legend's figures are those of the day that is looked at.
Card {
    id: card
    required property var chart

    ChartHeader {
        width: parent.width
        readout: columns.readout
    }
    ChartColumns {
        id: columns
        width: parent.width
        height: 136
        chart: card.chart
        colors: Theme.colors
        type: Theme.type
        mirrored: LayoutMirroring.enabled
        activeFocusOnTab: true
        Accessible.role: Accessible.Chart
        Accessible.name: "Usage by day"
        Accessible.description: readout.spoken
        Accessible.focusable: true
        FocusRing { distance: 6 }
    }
    Row {
        width: parent.width
        Repeater {
            model: card.chart.series
            Row {
                id: entry
                required property var modelData
                // In line with the columns of the statistics above, unless there are too many.
                width: parent.width / Math.max(3, card.chart.series.length)
                spacing: Theme.space.s

                ProviderMark {
                    anchors.verticalCenter: parent.verticalCenter
                    provider: entry.modelData.id
                    color: Theme.colors.series[series]
                }
                Column {
                    Label {
                        id: name
                        width: Math.max(implicitWidth, figure.implicitWidth)
                        text: entry.modelData.name
                        size: Theme.type.caption
                        color: Theme.colors.secondaryText
                    }
                    Label {
                        id: figure
                        width: name.width
                        text: columns.readout.figures[entry.modelData.id] ?? ""
                        font.weight: Font.Medium
                    }
                }
            }
        }
    }
}
