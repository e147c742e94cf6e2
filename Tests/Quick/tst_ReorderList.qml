import QtQuick
import Kivo.Settings

// As in a settings page: what scrolls must not take the drag away.
Flickable {
    id: window
    width: 300
    height: 400
    contentHeight: 800

    ListModel { id: letters }
    ReorderList {
        id: order
        width: parent.width
        spacing: 10
        model: letters
        onMoved: (from, to) => letters.move(from, to, 1)
        delegate: ReorderItem {
            id: item
            required property string letter
            required property int high
            property alias grip: grip
            list: order
            contentHeight: high
            ReorderGrip {
                id: grip
                item: item
                name: item.letter
            }
        }
    }

    Look {
        name: "ReorderList"

        function letterOrder() {
            return Array.from({ length: letters.count }, (_, at) => letters.get(at).letter).join("")
        }
        function init() {
            letters.clear()
            for (const [letter, high] of [["a", 40], ["b", 40], ["c", 100], ["d", 40]])
                letters.append({ letter: letter, high: high })
            tryVerify(() => order.itemAt(3).y === 210)
        }

        function test_drag_data() {
            return [
                { tag: "down past one", letter: "a", by: 31, order: "bacd" },
                { tag: "not yet past it", letter: "a", by: 19, order: "abcd" },
                { tag: "to the end", letter: "a", by: 260, order: "bcda" },
                { tag: "up past a higher one", letter: "d", by: -70, order: "abdc" },
                { tag: "to the top", letter: "d", by: -300, order: "dabc" },
            ]
        }
        function test_drag(data) {
            const item = order.itemAt(letterOrder().indexOf(data.letter))
            const grip = item.grip
            const from = grip.mapToItem(window, 10, 14)
            mousePress(window, from.x, from.y)
            for (let step = 1; step <= 10; ++step)
                mouseMove(window, from.x, from.y + data.by * step / 10)
            verify(item.dragging)
            mouseRelease(window, from.x, from.y + data.by)
            compare(letterOrder(), data.order)
            verify(!item.dragging)
            // Everything comes to rest where it belongs.
            for (let at = 0; at < order.count; ++at)
                tryCompare(order.itemAt(at), "y", order.itemAt(at).restingY())
        }
    }
}
