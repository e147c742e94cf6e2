import QtQuick
import Tokwatch.Popover.Models

ModelsTab {
    id: tab
    width: 420
    height: 500
    view: popoverView.models
    active: true

    Look {
        name: "ModelsTab"
        property Item list
        property Item table

        function initTestCase() {
            world.use("claude", "2026-11-24", 1, 5000)
            list = classed("QQuickListView")
            table = classed("BreakdownTable")
        }
        function init() {
            list.currentIndex = 0
            list.positionViewAtBeginning()
        }

        function test_onlyWhatIsSeenExists() {
            compare(list.count, 5000)
            list.positionViewAtEnd()
            list.positionViewAtIndex(2500, ListView.Beginning)
            verify(list.contentItem.children.length < 60, list.contentItem.children.length)
            compare(list.itemAtIndex(2500).row.title, "model-2500")
        }

        function test_keysMoveTheCurrentRow() {
            for (const [keys, row] of [[[Qt.Key_Up], 0], [[Qt.Key_PageDown, Qt.Key_PageUp], 0],
                                       [[Qt.Key_End, Qt.Key_Down], 4999], [[Qt.Key_Home], 0]]) {
                type(keys, list)
                compare(table.currentIndex, row)
                tryVerify(() => list.itemAtIndex(row)?.isCurrent, 5000, "and it is in sight")
            }
        }

        function test_copies() {
            type([[Qt.Key_C, Qt.ControlModifier]], list)
            verify(world.clipboard().startsWith("   #  Provider  Model"))
            compare(world.clipboard().split("\n").length, 5002)
            const button = classed("BreakdownCopy")
            compare(button.text, "Copied")
            mouseClick(button)
            type([Qt.Key_Down, Qt.Key_Down, Qt.Key_Return])
            verify(world.clipboard().startsWith("Provider,Model,Tokens"), world.clipboard().slice(0, 40))
            verify(button.activeFocus, "the keyboard is nobody's")
            type([Qt.Key_Space, Qt.Key_Escape])
            verify(button.activeFocus, "the keyboard is nobody's")
        }

        function test_changesToDays() {
            list.currentIndex = 7
            type([Qt.Key_Right], classed("SegmentedControl"))
            tryCompare(list, "count", 1)
            compare(table.currentIndex, 0)
            compare(list.itemAtIndex(0).row.title, "Tue, Nov 24")
            // Of today; a list that was given up changes nothing.
            type([Qt.Key_Space, Qt.Key_Up, Qt.Key_Escape, Qt.Key_Space, Qt.Key_Up, Qt.Key_Up, Qt.Key_Return], named("Days"))
            compare(tab.view.range.days, 1)
            world.settle()
            tryCompare(list, "count", 1)
            type([Qt.Key_End], classed("SegmentedControl"))
            tryVerify(() => tab.view.state.isWaiting)
            world.settle()
            verify(!tab.view.state.isWaiting)
            compare(tab.view.state.emptyText, "No usage today", "there is no log")
            tab.view.range.days = 30
            type([Qt.Key_Home], classed("SegmentedControl"))
            tryCompare(list, "count", 5000)
        }
    }
}
