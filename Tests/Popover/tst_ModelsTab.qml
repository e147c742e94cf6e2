import QtQuick
import QtTest
import Tokwatch.Popover

Item {
    width: 420
    height: 500

    ModelsTab {
        id: tab
        width: 420
        height: 500
        view: world.models
        active: true
    }

    TestCase {
        name: "ModelsTab"
        when: windowShown

        property Item list
        property Item table

        function find(item, type) {
            if (item.toString().includes(type))
                return item
            for (let i = 0; i < item.children.length; ++i) {
                const found = find(item.children[i], type)
                if (found)
                    return found
            }
            return null
        }

        function initTestCase() {
            world.useModels(5000)
            list = find(tab, "QQuickListView")
            table = find(tab, "BreakdownTable")
            verify(list)
            verify(table)
        }
        function init() {
            world.models.mode = 0
            world.settle()
            list.currentIndex = 0
            list.positionViewAtBeginning()
        }

        function test_onlyWhatIsSeenExists() {
            compare(list.count, 5000)
            list.positionViewAtEnd()
            list.positionViewAtIndex(2500, ListView.Beginning)
            verify(list.contentItem.children.length < 60, list.contentItem.children.length)
            compare(list.itemAtIndex(2500).row.title, "model-2500")
            compare(list.itemAtIndex(2500).row.rank, "2501")
        }

        function test_keysMoveTheCurrentRow_data() {
            return [
                { tag: "down", keys: [Qt.Key_Down, Qt.Key_Down], row: 2 },
                { tag: "up at the top", keys: [Qt.Key_Up], row: 0 },
                { tag: "end", keys: [Qt.Key_End], row: 4999 },
                { tag: "down at the end", keys: [Qt.Key_End, Qt.Key_Down], row: 4999 },
                { tag: "home", keys: [Qt.Key_End, Qt.Key_Home], row: 0 },
                { tag: "a page and back", keys: [Qt.Key_PageDown, Qt.Key_PageUp], row: 0 },
            ]
        }
        function test_keysMoveTheCurrentRow(data) {
            list.forceActiveFocus(Qt.TabFocusReason)
            for (const key of data.keys)
                keyClick(key)
            compare(table.currentIndex, data.row)
            const item = list.itemAtIndex(data.row)
            verify(item && item.isCurrent, "and it is in sight")
        }

        function test_copies() {
            list.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_C, Qt.ControlModifier)
            verify(world.clipboard().startsWith("   #  Provider  Model"))
            compare(world.clipboard().split("\n").length, 5002)

            const button = find(tab, "BreakdownCopy")
            compare(button.text, "Copied")
            mouseClick(button)
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Return)
            verify(world.clipboard().startsWith("Provider,Model,Tokens"), world.clipboard().slice(0, 40))
            verify(button.activeFocus, "the keyboard is nobody's")
            keyClick(Qt.Key_Space)
            keyClick(Qt.Key_Escape)
            verify(button.activeFocus, "the keyboard is nobody's")
        }

        function test_changesToDays() {
            const modes = find(tab, "SegmentedControl")
            list.currentIndex = 7
            modes.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Right)
            tryCompare(list, "count", 1)
            compare(table.currentIndex, 0)
            compare(list.itemAtIndex(0).row.title, "Tue, Nov 24")
            keyClick(Qt.Key_Left)
            tryCompare(list, "count", 5000)
        }
    }
}
