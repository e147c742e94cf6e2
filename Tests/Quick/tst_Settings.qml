import QtQuick
import QtTest
import Tokwatch.Settings

Item {
    id: stage
    width: 720
    height: 560

    SettingsContent {
        id: content
        anchors.fill: parent
        view: settingsView
    }
    SignalSpy { id: closings; target: settingsView; signalName: "closeRequested" }

    Look {
        name: "Settings"

        function onPage(page, name) {
            settingsView.page = page
            tryVerify(() => named(name), 5000, name)
            const control = named(name)
            control.forceActiveFocus(Qt.TabFocusReason)
            return control
        }
        function initTestCase() {
            world.knowLimits()
        }

        function test_sections() {
            settingsView.page = 0
            const list = classed("SectionList")
            for (const [keys, page] of [[[Qt.Key_Up], 0], [[Qt.Key_Down], 1], [[Qt.Key_End, Qt.Key_Down], 6],
                                        [[Qt.Key_Home, [Qt.Key_PageUp, Qt.ControlModifier]], 6]]) {
                type(keys, list)
                compare(settingsView.page, page)
            }
        }

        function test_settings_data() {
            return [
                { page: 0, tag: "Show in the task bar", key: "showDockIcon", before: "false", after: "true" },
                { page: 1, tag: "Show the time until the reset", key: "showResetTime", before: "true", after: "false" },
                { page: 1, tag: "Tint the item when a limit runs low", key: "tintEnabled", before: "true", after: "false" },
                { page: 2, tag: "A limit reaches the warning level", key: "warning", before: "false", after: "true" },
                { page: 2, tag: "Quiet hours", key: "quietHours", before: "false", after: "true" },
                { page: 3, tag: "Show on the desktop", key: "shown", before: "false", after: "true" },
                { page: 3, tag: "Size", key: "size", press: Qt.Key_Right, before: "medium", after: "large" },
                { page: 4, tag: "Live limits", key: "claudeLiveLimits", before: "true", after: "false" },
                { page: 4, tag: "Codex: Show limits", key: "disabledProviders", before: "", after: "codex" },
                { page: 0, tag: "Theme", key: "theme", press: Qt.Key_End, before: "desktop", after: "dark" },
                { page: 0, tag: "Summaries lead with", key: "summaryUnit", press: Qt.Key_Right, before: "cost", after: "tokens" },
                { page: 1, tag: "Show", key: "menuBarStyle", press: Qt.Key_Left, before: "provider", after: "icon" },
                { page: 1, tag: "Provider", key: "pinnedProvider", press: Qt.Key_Down, before: "claude", after: "codex" },
                { page: 1, tag: "Claude", key: "menuBarWindows", press: Qt.Key_Down, before: "", after: "claude=session" },
            ]
        }
        function test_settings(data) {
            const control = onPage(data.page, data.tag)
            const shown = () => control.checked ?? control.currentIndex
            const before = shown()
            compare(world.preference(data.key), data.before)
            keyClick(data.press ?? Qt.Key_Space)
            compare(world.preference(data.key), data.after)
            verify(shown() !== before)
            world.setPreference(data.key, data.before)
            compare(shown(), before, "follows what others set")
        }

        function test_switchMovesBackWhenItsSettingCannotBeHad() {
            world.blockAutostart()
            const control = onPage(0, "Start at login")
            for (let attempt = 0; attempt < 2; ++attempt) {
                keyClick(Qt.Key_Space)
                verify(!control.checked)
            }
        }

        function test_recordsAHotKey() {
            const field = onPage(0, "Hot key")
            const closed = closings.count
            const said = () => settingsView.hotKey.state.caption
            for (const [keys, kept, caption] of [
                [[Qt.Key_Space, [Qt.Key_W, Qt.ControlModifier]], "Ctrl+W", "Opens and closes"],
                [[Qt.Key_Space, [Qt.Key_X, Qt.ControlModifier | Qt.AltModifier]], "Ctrl+W", "Another program has Ctrl+Alt+X. Ctrl+W stays."],
                [[Qt.Key_Space, Qt.Key_T, [Qt.Key_T, Qt.ShiftModifier]], "Ctrl+W", "Hold Ctrl"],
                [[Qt.Key_Escape, [Qt.Key_T, Qt.MetaModifier]], "Ctrl+W", "Opens and closes"],
                [[Qt.Key_Return, Qt.Key_F9], "F9", "Opens and closes"],
                [[Qt.Key_Backspace], "", "Opens and closes"],
            ]) {
                type(keys, field)
                world.settle()
                compare(world.preference("hotKey"), kept)
                verify(said().startsWith(caption), said())
            }
            compare(closings.count, closed, "the window's own keys were taken for its own")
        }

        function test_providersAreReordered() {
            const control = onPage(4, "Claude: Show limits")
            type([[Qt.Key_Down, Qt.AltModifier], [Qt.Key_Down, Qt.AltModifier]])
            compare(world.preference("providerOrder"), "codex,grok,claude,cursor")
            verify(control.activeFocus, "the focus goes with it")
            type([[Qt.Key_Up, Qt.AltModifier], [Qt.Key_Up, Qt.AltModifier], [Qt.Key_Up, Qt.AltModifier]])
            compare(world.preference("providerOrder"), "claude,codex,grok,cursor")
        }

        function test_whatTheKeyboardReachesIsInSight() {
            const preview = onPage(1, "Preview: Claude 50%")
            const pinned = preview.mapToItem(content, 0, 0).y
            const end = pinned + preview.height
            stage.height = 320
            for (const name of ["Critical level", "Show"]) {
                const control = named(name)
                control.forceActiveFocus(Qt.TabFocusReason)
                const at = control.mapToItem(content, 0, 0).y
                verify(at >= end && at + control.height <= content.height, name + " at " + at)
                compare(preview.mapToItem(content, 0, 0).y, pinned)
            }
            stage.height = 560
        }

        function test_tabGoesFromTheListThroughThePage() {
            onPage(0, "Start at login")
            const list = classed("SectionList")
            list.forceActiveFocus(Qt.TabFocusReason)
            for (const name of ["Start at login", "Show in the task bar"]) {
                keyClick(Qt.Key_Tab)
                compare(content.Window.activeFocusItem.Accessible.name, name)
            }
            type([[Qt.Key_Tab, Qt.ShiftModifier], [Qt.Key_Tab, Qt.ShiftModifier]])
            verify(list.activeFocus)
        }

        function test_asksForClosing() {
            content.forceActiveFocus()
            type([Qt.Key_Escape, [Qt.Key_W, Qt.ControlModifier]])
            compare(closings.count, 2)
        }
    }
}
