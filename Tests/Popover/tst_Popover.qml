import QtQuick
import QtTest
import Tokwatch.Popover

Item {
    id: stage
    width: 420
    height: 600

    Popover {
        id: popover
        anchors.fill: parent
        view: world.popover
    }
    SignalSpy { id: closing; target: popover; signalName: "closeRequested" }
    SignalSpy { id: settings; target: world.popover; signalName: "settingsRequested" }
    SignalSpy { id: quitting; target: world.popover; signalName: "quitRequested" }

    TestCase {
        name: "Popover"
        when: windowShown

        function init() {
            world.popover.tab = 0
            popover.forceActiveFocus()
            for (const spy of [closing, settings, quitting])
                spy.clear()
        }

        /// The first item below that is named so for screen readers.
        function named(item, name) {
            if (item.visible && item.Accessible.name === name)
                return item
            for (let i = 0; i < item.children.length; ++i) {
                const found = named(item.children[i], name)
                if (found)
                    return found
            }
            return null
        }

        function test_keys_switch_tabs_data() {
            return [
                { tag: "right", keys: [[Qt.Key_Right]], tab: 1 },
                { tag: "to the end and no further", keys: [[Qt.Key_End], [Qt.Key_Right]], tab: 2 },
                { tag: "and back", keys: [[Qt.Key_End], [Qt.Key_Left]], tab: 1 },
                { tag: "home", keys: [[Qt.Key_End], [Qt.Key_Home]], tab: 0 },
                { tag: "around", keys: [[Qt.Key_PageUp, Qt.ControlModifier]], tab: 2 },
                { tag: "around again", keys: [[Qt.Key_PageUp, Qt.ControlModifier], [Qt.Key_PageDown, Qt.ControlModifier]], tab: 0 },
            ]
        }
        function test_keys_switch_tabs(data) {
            for (const [key, modifiers] of data.keys)
                keyClick(key, modifiers ?? Qt.NoModifier)
            compare(world.popover.tab, data.tab)
        }

        function test_pointer_switches_tabs() {
            mouseClick(named(popover, "Models"))
            compare(world.popover.tab, 2)
        }

        function test_shortcuts() {
            keyClick(Qt.Key_Comma, Qt.ControlModifier)
            compare(settings.count, 1)
            keyClick(Qt.Key_Q, Qt.ControlModifier)
            compare(quitting.count, 1)
            keyClick(Qt.Key_Escape)
            compare(closing.count, 1)
            keyClick(Qt.Key_R, Qt.ControlModifier)
            verify(world.popover.footer.state.isRefreshing)
        }

        function scrolled(item) {
            if (item.visible && item.contentY !== undefined)
                return item
            for (let i = 0; i < item.children.length; ++i) {
                const found = scrolled(item.children[i])
                if (found)
                    return found
            }
            return null
        }

        function test_keyboard_reaches_what_does_not_fit() {
            world.useOn("2026-11-24", 12)
            world.settle()
            stage.height = 320
            const page = scrolled(popover)
            verify(page.contentHeight > page.height)
            keyClick(Qt.Key_Down)
            verify(page.contentY > 0)
            keyClick(Qt.Key_PageUp)
            compare(page.contentY, 0)

            named(popover, "Sections").forceActiveFocus()
            const names = []
            for (let i = 0; i < 5; ++i) {
                keyClick(Qt.Key_Tab)
                const item = popover.Window.activeFocusItem
                names.push(item.Accessible.name)
                if (i > 2)
                    continue
                const top = item.mapToItem(page, 0, 0).y
                verify(top >= 0 && top + item.height <= page.height, names[i] + " is out of sight")
            }
            const spoken = world.popover.usage.summary.spoken
            compare(names, ["Details: " + spoken, spoken, "About the API estimate", "Refresh", "Settings"])
            stage.height = 600
        }

        function test_headline_switches_the_unit() {
            world.useOn("2026-11-24", 12)
            world.settle()
            const headline = named(popover, world.popover.usage.summary.spoken)
            verify(headline)
            verify(world.popover.usage.summary.showsCost)
            mouseClick(headline)
            world.settle()
            verify(!world.popover.usage.summary.showsCost)
            headline.forceActiveFocus()
            keyClick(Qt.Key_Space)
            world.settle()
            verify(world.popover.usage.summary.showsCost)
        }
    }
}
