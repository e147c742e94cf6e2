import QtQuick
import Kivo.Theme
import Kivo.Settings

/// One row of a ReorderList, as high as its content.
FocusScope {
    id: item
    required property int index
    required property ReorderList list
    default property alias content: surface.data
    property alias contentHeight: surface.height

    /// Where the row is while it hangs on the pointer.
    property real draggedY: 0
    property bool dragging: false
    /// Where it belongs, also while it is on its way there.
    function restingY() {
        let above = 0
        for (let at = 0; at < index; ++at)
            above += (list.itemAt(at)?.height ?? 0) + list.spacing
        return above
    }

    function dragTo(y) {
        draggedY = Math.max(0, Math.min(list.height - height, y))
        dragging = true
        list.drag(item)
    }
    function drop() {
        dragging = false
    }

    width: parent?.width ?? 0
    height: surface.height
    z: dragging ? 1 : 0
    Keys.onPressed: event => {
        const up = event.key === Qt.Key_Up
        if (!(event.modifiers & Qt.AltModifier) || (!up && event.key !== Qt.Key_Down))
            return
        event.accepted = true
        list.move(index, index + (up ? -1 : 1))
    }

    Item {
        id: surface
        y: item.dragging ? item.draggedY - item.y : 0
        width: parent.width
        Behavior on y {
            enabled: !item.dragging
            NumberAnimation { duration: Theme.motion.quick; easing.type: Easing.OutCubic }
        }
    }
}
