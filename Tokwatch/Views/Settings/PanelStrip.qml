import QtQuick
import Kivo.Theme
import Tokwatch.Settings

/// The status item on a panel of one tone: with its text, and as hosts show it that give every item
/// a square.
Rectangle {
    id: strip
    required property var title
    required property bool dark

    height: 36
    radius: Theme.space.radius
    color: wide.panelColor
    border.width: 1
    border.color: Theme.colors.hairline

    StatusPreview {
        id: wide
        anchors { left: parent.left; leftMargin: Theme.space.m; verticalCenter: parent.verticalCenter }
        title: strip.title
        onDarkPanel: strip.dark
    }
    StatusPreview {
        anchors { right: parent.right; rightMargin: Theme.space.m; verticalCenter: parent.verticalCenter }
        visible: strip.title.percent >= 0
        title: strip.title
        onDarkPanel: strip.dark
        isSquare: true
    }
}
