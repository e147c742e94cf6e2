import QtQuick
import QtTest
import Kivo.Theme
import Kivo.Settings

Item {
    id: window
    width: 300
    height: 400

    ListModel { id: letters }

    // As in a settings page: what scrolls must not take the drag away.
    Flickable {
        anchors.fill: parent
        contentHeight: 800

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
                property alias inner: inner
                list: order
                contentHeight: high
                ReorderGrip {
                    id: grip
                    item: item
                    name: item.letter
                }
                Toggle {
                    id: inner
                    x: 100
                    text: item.letter
                }
            }
        }
    }

    TestCase {
        name: "ReorderList"
        when: windowShown

        function letterOrder() {
            let text = ""
            for (let at = 0; at < letters.count; ++at)
                text += letters.get(at).letter
            return text
        }
        function itemOf(letter) {
            for (let at = 0; at < order.count; ++at)
                if (order.itemAt(at).letter === letter)
                    return order.itemAt(at)
            return null
        }
        function init() {
            letters.clear()
            for (const [letter, high] of [["a", 40], ["b", 40], ["c", 100], ["d", 40]])
                letters.append({ letter: letter, high: high })
            tryVerify(() => order.itemAt(3).y === 210)
        }

        function test_keys_data() {
            return [
                { tag: "down", letter: "a", keys: [Qt.Key_Down], order: "bacd" },
                { tag: "up", letter: "d", keys: [Qt.Key_Up], order: "abdc" },
                { tag: "all the way", letter: "a", keys: [Qt.Key_Down, Qt.Key_Down, Qt.Key_Down], order: "bcda" },
                { tag: "past the end", letter: "d", keys: [Qt.Key_Down], order: "abcd" },
                { tag: "past the top", letter: "a", keys: [Qt.Key_Up], order: "abcd" },
                { tag: "without Alt", letter: "a", keys: [Qt.Key_Down], modifier: Qt.NoModifier, order: "abcd" },
            ]
        }
        function test_keys(data) {
            for (const part of ["grip", "inner"]) {
                init()
                itemOf(data.letter)[part].forceActiveFocus(Qt.TabFocusReason)
                for (const key of data.keys)
                    keyClick(key, data.modifier ?? Qt.AltModifier)
                compare(letterOrder(), data.order)
                verify(itemOf(data.letter)[part].activeFocus, "the focus goes with it")
            }
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
            const grip = itemOf(data.letter).grip
            const from = grip.mapToItem(window, 10, 14)
            mousePress(window, from.x, from.y)
            for (let step = 1; step <= 10; ++step)
                mouseMove(window, from.x, from.y + data.by * step / 10)
            verify(itemOf(data.letter).dragging)
            mouseRelease(window, from.x, from.y + data.by)
            compare(letterOrder(), data.order)
            verify(!itemOf(data.letter).dragging)
            // Everything comes to rest where it belongs.
            for (let at = 0; at < order.count; ++at)
                tryCompare(order.itemAt(at), "y", order.itemAt(at).restingY())
        }
    }
}
