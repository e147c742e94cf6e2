import QtQuick
import Kivo.Theme
import Tokwatch.Popover.Stats

/// The stored days as a calendar.
Card {
    id: card
    required property var calendar

    ChartHeader {
        width: parent.width
        readout: cells.readout
    }
    HeatMapCells {
        id: cells
        width: parent.width
        height: 146
        calendar: card.calendar
        colors: Theme.colors
        type: Theme.type
        mirrored: LayoutMirroring.enabled
        activeFocusOnTab: true
        Accessible.role: Accessible.Chart
        Accessible.name: "Calendar of usage"
        Accessible.description: readout.spoken
        Accessible.focusable: true
        FocusRing { distance: 6 }
    }
    Row {
        anchors.right: parent.right
        spacing: 6
        Accessible.ignored: true

        Label {
            text: "Less"
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
        Row {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 3
            Repeater {
                model: Theme.colors.intensity
                Rectangle {
                    required property color modelData
                    width: 10
                    height: 10
                    radius: 2
                    color: modelData
                }
            }
        }
        Label {
            text: "More"
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
    }
}
