import QtQuick
import Kivo.Theme

/// A column whose ReorderItems can be brought into another order: dragged by their grip, or with
/// Alt+Up and Alt+Down from anywhere inside. `moved` asks the model for it, and the model moves its
/// row without making it anew.
Column {
    id: list
    property alias model: repeater.model
    property alias delegate: repeater.delegate
    readonly property alias count: repeater.count
    signal moved(int from, int to)

    function itemAt(index) {
        return repeater.itemAt(index)
    }
    function move(from, to) {
        if (to !== from && to >= 0 && to < count)
            moved(from, to)
    }
    /// Moves the dragged item past each neighbour whose middle it has crossed.
    function drag(item) {
        const middle = item.draggedY + item.height / 2
        const above = itemAt(item.index - 1)
        const below = itemAt(item.index + 1)
        if (above && middle < above.restingY + above.height / 2)
            move(item.index, item.index - 1)
        else if (below && middle > below.restingY + below.height / 2)
            move(item.index, item.index + 1)
    }

    move: Transition {
        NumberAnimation { property: "y"; duration: Theme.motion.calm; easing.type: Easing.OutCubic }
    }
    Repeater { id: repeater }
}
