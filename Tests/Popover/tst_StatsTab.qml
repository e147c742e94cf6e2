import QtQuick
import QtTest
import Tokwatch.Popover

Item {
    width: 420
    height: 700

    StatsTab {
        id: tab
        width: 420
        height: 700
        view: world.stats
        active: true
    }

    TestCase {
        id: test
        name: "StatsTab"
        when: windowShown

        property Item columns
        property Item cells

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
            world.useOn("2026-11-23", 2)
            world.useOn("2026-11-24", 3)
            world.useModels(1)
            columns = find(tab, "ChartColumns")
            cells = find(tab, "HeatMapCells")
            verify(columns)
            verify(cells)
        }
        function cleanup() {
            tab.LayoutMirroring.enabled = false
            tab.LayoutMirroring.childrenInherit = true
            test.forceActiveFocus()
            mouseMove(tab, 1, 1)
        }

        function test_pointerShowsADay() {
            const height = tab.implicitHeight
            compare(columns.readout.title, "Last 30 days")
            mouseMove(columns, columns.width - 2, 60)
            compare(columns.current, 29)
            compare(columns.readout.value, "$4.00")
            compare(columns.readout.figures, ["$1.00", "$3.00"])
            mouseMove(columns, columns.width - 14, 60)
            compare(columns.readout.title, "Mon, Nov 23")
            compare(tab.implicitHeight, height, "nothing jumps")
            mouseMove(columns, 2, 60)
            compare(columns.readout.title, "Last 30 days", "nor is there a day at the axis")

            mouseMove(cells, cells.width - 4, 20 + 27)
            compare(cells.readout.title, "Today, Nov 24")
            mouseMove(cells, cells.width - 4, cells.height - 4)
            compare(cells.current, -1, "a day to come")
        }

        function test_keysLeadThroughTheDays_data() {
            return [
                { tag: "columns", plot: columns, keys: [], title: "Today, Nov 24" },
                { tag: "columns left", plot: columns, keys: [Qt.Key_Left], title: "Mon, Nov 23" },
                { tag: "columns past the end", plot: columns, keys: [Qt.Key_Right], title: "Today, Nov 24" },
                { tag: "columns home", plot: columns, keys: [Qt.Key_Home, Qt.Key_Left], title: "Mon, Oct 26" },
                { tag: "columns there and back", plot: columns, keys: [Qt.Key_Home, Qt.Key_End], title: "Today, Nov 24" },
                { tag: "columns mirrored", plot: columns, mirrored: true, keys: [Qt.Key_Right], title: "Mon, Nov 23" },
                { tag: "cells left is a week", plot: cells, keys: [Qt.Key_Left], title: "Tue, Nov 17" },
                { tag: "cells up is a day", plot: cells, keys: [Qt.Key_Up], title: "Mon, Nov 23" },
                { tag: "cells up ends on Monday", plot: cells, keys: [Qt.Key_Up, Qt.Key_Up], title: "Mon, Nov 23" },
                { tag: "cells down into the future", plot: cells, keys: [Qt.Key_Down], title: "Today, Nov 24" },
                { tag: "cells home", plot: cells, keys: [Qt.Key_Home, Qt.Key_Left], title: "Thu, Aug 27" },
                { tag: "cells mirrored", plot: cells, mirrored: true, keys: [Qt.Key_Right], title: "Tue, Nov 17" },
            ]
        }
        function test_keysLeadThroughTheDays(data) {
            tab.LayoutMirroring.enabled = data.mirrored ?? false
            data.plot.forceActiveFocus(Qt.TabFocusReason)
            verify(data.plot.visualFocus)
            for (const key of data.keys)
                keyClick(key)
            compare(data.plot.readout.title, data.title)
            test.forceActiveFocus()
            compare(data.plot.current, -1, "all days again without the keyboard")
        }

        function test_aPressLeadsTheKeyboardThere() {
            mouseClick(columns, columns.width - 14, 60)
            verify(columns.activeFocus)
            verify(!columns.visualFocus, "no ring for the pointer")
            mouseMove(tab, 1, 1)
            compare(columns.readout.title, "Mon, Nov 23")
            keyClick(Qt.Key_Left)
            compare(columns.readout.title, "Sun, Nov 22")
            verify(columns.visualFocus)
        }
    }
}
