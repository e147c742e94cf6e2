import QtQuick
import Kivo.Theme

/// A whole and its parts, with the legend below.
Column {
    id: bar
    required property var segments
    readonly property int gap: 2

    spacing: Theme.space.m

    Row {
        id: strip
        // Each is to be seen, whatever its part.
        readonly property int least: 2
        readonly property real room: width - (bar.gap + least) * bar.segments.length + bar.gap
        width: parent.width
        height: 12
        spacing: bar.gap
        Repeater {
            model: bar.segments
            Rectangle {
                required property var modelData
                width: strip.least + strip.room * modelData.fraction
                height: 12
                radius: 3
                color: Theme.colors.parts[modelData.part]
            }
        }
    }
    Grid {
        columns: 2
        columnSpacing: Theme.space.xl
        rowSpacing: 6
        Repeater {
            model: bar.segments
            Item {
                id: entry
                required property var modelData
                width: (bar.width - Theme.space.xl) / 2
                height: label.implicitHeight
                Accessible.role: Accessible.ListItem
                Accessible.name: modelData.label + " " + modelData.text
                Rectangle {
                    id: dot
                    anchors { left: parent.left; verticalCenter: parent.verticalCenter }
                    width: 8
                    height: 8
                    radius: 2
                    color: Theme.colors.parts[entry.modelData.part]
                }
                Label {
                    id: label
                    anchors { left: dot.right; leftMargin: 6 }
                    text: entry.modelData.label
                    size: Theme.type.caption
                    color: Theme.colors.secondaryText
                    Accessible.ignored: true
                }
                Label {
                    anchors { right: parent.right; baseline: label.baseline }
                    text: entry.modelData.text
                    size: Theme.type.caption
                    font.weight: Font.Medium
                    Accessible.ignored: true
                }
            }
        }
    }
}
