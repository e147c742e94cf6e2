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
    /// Moves the dragged item to the place that it is closest to.
    function drag(item) {
        for (let left = count; left > 0; --left) {
            const above = itemAt(item.index - 1)
            const below = itemAt(item.index + 1)
            const away = item.draggedY - item.restingY()
            const before = item.index
            if (above && away < -(above.height + spacing) / 2)
                move(before, before - 1)
            else if (below && away > (below.height + spacing) / 2)
                move(before, before + 1)
            if (item.index === before)
                return
        }
    }

    move: Transition {
        NumberAnimation { property: "y"; duration: Theme.motion.calm; easing.type: Easing.OutCubic }
    }
    Repeater { id: repeater }
}
