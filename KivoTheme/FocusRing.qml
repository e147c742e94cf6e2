import QtQuick
import Kivo.Theme

/// Shows which control the keyboard works on; the control is the parent.
Rectangle {
    property real distance: 2

    anchors.fill: parent
    anchors.margins: -distance
    visible: parent.visualFocus ?? parent.activeFocus
    color: "transparent"
    radius: (parent.radius ?? parent.background?.radius ?? Theme.space.radius) + distance
    border.width: 2
    border.color: Theme.colors.focus
}
