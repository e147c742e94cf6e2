import QtQuick
import Kivo.Theme

/// How far something is that takes its time.
Rectangle {
    id: line
    required property string name
    required property double fraction

    height: 3
    radius: 1.5
    color: Theme.colors.track
    Accessible.role: Accessible.ProgressBar
    Accessible.name: name
    Rectangle {
        anchors.left: parent.left
        width: parent.width * line.fraction
        height: parent.height
        radius: parent.radius
        color: Theme.colors.accent
    }
}
