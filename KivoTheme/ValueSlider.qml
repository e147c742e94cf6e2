import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A slider whose filled part has a meaning of its own, told by `fill`.
T.Slider {
    id: slider
    property string name
    property color fill: Theme.colors.accent

    implicitWidth: 200
    implicitHeight: 24
    focusPolicy: Qt.StrongFocus
    Accessible.name: name

    background: Rectangle {
        y: (slider.height - height) / 2
        width: slider.width
        height: 4
        radius: 2
        color: Theme.colors.track
        Rectangle {
            x: slider.mirrored ? parent.width - width : 0
            width: slider.position * parent.width
            height: parent.height
            radius: 2
            color: slider.fill
        }
    }
    handle: Rectangle {
        x: slider.visualPosition * (slider.width - width)
        y: (slider.height - height) / 2
        width: 18
        height: 18
        radius: 9
        color: Theme.colors.knob
        border.width: 1
        border.color: Theme.colors.outline
        Rectangle {
            anchors.fill: parent
            anchors.margins: -3
            visible: slider.visualFocus
            color: "transparent"
            radius: 12
            border.width: 2
            border.color: Theme.colors.focus
        }
    }
}
