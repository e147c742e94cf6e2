import QtQuick
import QtTest
import Tokwatch.Common
import Tokwatch.Popover

Item {
    id: stage
    width: 420
    height: 700

    Popover {
        id: popover
        anchors.fill: parent
        view: popoverView
        LayoutMirroring.childrenInherit: true
    }
    SignalSpy { id: closings; target: popover; signalName: "closeRequested" }
    SignalSpy { id: settings; target: popoverView; signalName: "settingsRequested" }
    SignalSpy { id: pastes; target: popoverView; signalName: "pasteRequested" }
    SignalSpy { id: quits; target: popoverView; signalName: "quitRequested" }

    Look {
        id: test
        name: "Popover"
        property Item columns
        property Item cells

        function show(tab) {
            popoverView.tab = tab
            world.settle()
        }
        function initTestCase() {
            world.use("codex", "2026-11-23", 2)
            world.use("codex", "2026-11-24", 3)
            world.use("claude", "2026-11-24", 1)
            show(1)
            columns = classed("ChartColumns")
            cells = classed("HeatMapCells")
        }
        function init() {
            show(0)
            named("Sections").forceActiveFocus()
        }
        function cleanup() {
            stage.height = 700
            popover.LayoutMirroring.enabled = false
            test.forceActiveFocus()
            mouseMove(popover, 1, 1)
        }

        function test_tabs() {
            type([Qt.Key_End, Qt.Key_Left])
            compare(popoverView.tab, 1)
            type([[Qt.Key_PageUp, Qt.ControlModifier], [Qt.Key_PageUp, Qt.ControlModifier]])
            compare(popoverView.tab, 2, "around")
        }

        function test_shortcuts() {
            type([[Qt.Key_Comma, Qt.ControlModifier], [Qt.Key_Q, Qt.ControlModifier], Qt.Key_Escape])
            compare([settings.count, quits.count, closings.count], [1, 1, 1])
            type([[Qt.Key_R, Qt.ControlModifier]])
            verify(popoverView.footer.state.isRefreshing)
        }

        function test_takesTheSummaryAndThePictureElsewhere() {
            const copy = classed("CopyMenu")
            const lines = ["Today: $4.00 · 2.00K tokens · API estimate", "Last 30 days: $6.00 · 3.00K tokens · API estimate"]
            type([Qt.Key_Space, Qt.Key_Down, Qt.Key_Return], copy)
            const begin = text => text.split("\n").slice(0, 2).join("\n")
            compare(begin(pastes.signalArguments[0][0]), lines.join("\n"))
            type([Qt.Key_Space, Qt.Key_Down, Qt.Key_Down, Qt.Key_Return], copy)
            compare([begin(world.clipboard()), copy.text], [lines.join("\n"), "Copied"])
            show(1)
            const picture = named("Copy as a picture")
            type([Qt.Key_Space], picture)
            tryCompare(picture, "text", "Copied")
            verify(world.hasPictureInClipboard())
        }

        function test_keyboardReachesWhatDoesNotFit() {
            stage.height = 320
            const page = found(item => item.contentY !== undefined, popover)
            verify(page.contentHeight > page.height)
            type([Qt.Key_Down])
            verify(page.contentY > 0)
            type([Qt.Key_PageUp])
            compare(page.contentY, 0)

            const names = []
            for (let i = 0; i < 7; ++i) {
                keyClick(Qt.Key_Tab)
                const item = popover.Window.activeFocusItem
                names.push(item.Accessible.name)
                const top = item.mapToItem(page, 0, 0).y
                verify(i === 0 || i > 3 || top >= 0 && top + item.height <= page.height, names[i] + " is out of sight")
            }
            const spoken = popoverView.usage.summary.spoken
            compare(names, ["Pin the limits", "Details: " + spoken, "Unit", "About the API estimate", "Copy or paste the summary", "Refresh", "Settings"])
        }

        function test_switchesTheUnit() {
            const unit = named("Unit")
            type([Qt.Key_Right], unit)
            world.settle()
            compare([popoverView.usage.summary.unit, world.preference("summaryUnit")], [Segment.Tokens, "tokens"])
            type([Qt.Key_Left], unit)
            world.settle()
            compare([popoverView.usage.summary.unit, world.preference("summaryUnit")], [Segment.Cost, "cost"])
        }

        function test_theCourseOfALimit() {
            world.knowHistory()
            const limit = found(item => item.Accessible.name.startsWith("Session 40% left") && item.clicked, popover)
            verify(limit.Accessible.name.includes(". Runs out about "))
            verify(!classed("BurnUpPlot"))
            mouseClick(limit)
            verify(classed("BurnUpPlot").height > 0)
            type([Qt.Key_Space], limit)
            verify(!classed("BurnUpPlot"))
            type([Qt.Key_Return])
            world.passAMinute()
            verify(classed("BurnUpPlot") && limit.activeFocus, "what changes leaves it open, with the keyboard on it")
            world.knowLimits()
            verify(!classed("BurnUpPlot"), "another window, of which nothing is known")
        }

        function test_pointerShowsADay() {
            show(1)
            const height = popover.implicitHeight
            compare(columns.readout.title, "Last 30 days")
            mouseMove(columns, columns.width - 2, 60)
            compare(columns.readout.value, "$4.00")
            compare(columns.readout.figures, { claude: "$1.00", codex: "$3.00" })
            mouseMove(columns, columns.width - 14, 60)
            compare(columns.readout.title, "Mon, Nov 23")
            compare(popover.implicitHeight, height, "nothing jumps")
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
                { tag: "columns home", plot: columns, keys: [Qt.Key_Home, Qt.Key_Left], title: "Mon, Oct 26" },
                { tag: "columns mirrored", plot: columns, mirrored: true, keys: [Qt.Key_Right], title: "Mon, Nov 23" },
                { tag: "cells left is a week", plot: cells, keys: [Qt.Key_Left], title: "Tue, Nov 17" },
                { tag: "cells up ends on Monday", plot: cells, keys: [Qt.Key_Up, Qt.Key_Up], title: "Mon, Nov 23" },
                { tag: "cells down into the future", plot: cells, keys: [Qt.Key_Down], title: "Today, Nov 24" },
                { tag: "cells home", plot: cells, keys: [Qt.Key_Home, Qt.Key_Left], title: "Thu, Aug 27" },
                { tag: "cells mirrored", plot: cells, mirrored: true, keys: [Qt.Key_Right], title: "Tue, Nov 17" },
            ]
        }
        function test_keysLeadThroughTheDays(data) {
            show(1)
            popover.LayoutMirroring.enabled = data.mirrored ?? false
            type(data.keys, data.plot)
            compare(data.plot.readout.title, data.title)
            test.forceActiveFocus()
            compare(data.plot.current, -1, "all days again without the keyboard")
        }

        function test_aPressLeadsTheKeyboardThere() {
            show(1)
            mouseClick(columns, columns.width - 14, 60)
            verify(columns.activeFocus && !columns.visualFocus, "no ring for the pointer")
            mouseMove(popover, 1, 1)
            type([Qt.Key_Left])
            compare(columns.readout.title, "Sun, Nov 22")
            verify(columns.visualFocus)
        }
    }
}
