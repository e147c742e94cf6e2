import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A slider whose filled part has a meaning of its own, told by `fill`. It follows `amount` and asks
/// for another one with `chosen`; of its scale only the part from `lowest` to `highest` can be had.
T.Slider {
    id: slider
    property string name
    property string spoken
    property color fill: Theme.colors.accent
    property real amount: from
    property real lowest: from
    property real highest: to
    signal chosen(real amount)

    implicitWidth: 200
    implicitHeight: 24
    focusPolicy: Qt.StrongFocus
    snapMode: T.Slider.SnapAlways
    Accessible.name: name
    Accessible.description: spoken
    onAmountChanged: value = amount
    Component.onCompleted: value = amount
    onMoved: choose(value)
    Keys.onPressed: event => {
        const page = 10 * stepSize
        event.accepted = true
        switch (event.key) {
        case Qt.Key_Home: choose(lowest); break
        case Qt.Key_End: choose(highest); break
        case Qt.Key_PageUp: choose(value + page); break
        case Qt.Key_PageDown: choose(value - page); break
        default: event.accepted = false
        }
    }

    function choose(wanted) {
        value = Math.max(lowest, Math.min(highest, wanted))
        if (value !== amount)
            chosen(value)
    }

    background: Rectangle {
        y: (slider.height - height) / 2
        width: slider.width
        height: 4
        radius: 2
        color: Theme.colors.track
        Rectangle {
            x: slider.mirrored ? parent.width - width : 0
            width: slider.handle.width / 2 + slider.position * (parent.width - slider.handle.width)
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
