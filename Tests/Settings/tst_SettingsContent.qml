import QtQuick
import QtTest
import Tokwatch.Settings

Item {
    width: 720
    height: 560

    SettingsContent {
        id: content
        anchors.fill: parent
        view: world.view
    }
    SignalSpy {
        id: closings
        target: world.view
        signalName: "closeRequested"
    }

    TestCase {
        name: "SettingsContent"
        when: windowShown

        /// The visible thing that a screen reader calls so.
        function named(name, item) {
            item = item ?? content
            if (!item.visible)
                return null
            if (item.Accessible.name === name && item.Accessible.role !== Accessible.StaticText)
                return item
            for (let at = 0; at < item.children.length; ++at) {
                const found = named(name, item.children[at])
                if (found)
                    return found
            }
            return null
        }
        function onPage(page, name) {
            world.view.page = page
            tryVerify(() => named(name), 5000, name)
            const control = named(name)
            control.forceActiveFocus(Qt.TabFocusReason)
            return control
        }
        function init() {
            world.setPreference("warningThreshold", "0.25")
            world.setPreference("criticalThreshold", "0.1")
        }

        function test_switches_data() {
            return [
                { page: 0, tag: "Show in the task bar", key: "showDockIcon", before: "false", after: "true" },
                { page: 1, tag: "Show the time until the reset", key: "showResetTime", before: "true", after: "false" },
                { page: 1, tag: "Tint the item when a limit runs low", key: "tintEnabled", before: "true", after: "false" },
                { page: 2, tag: "Live limits", key: "claudeLiveLimits", before: "true", after: "false" },
                { page: 2, tag: "Show Codex's limits", key: "disabledProviders", before: "", after: "codex" },
            ]
        }
        function test_switches(data) {
            const control = onPage(data.page, data.tag)
            compare(world.preference(data.key), data.before)
            const was = control.checked
            keyClick(Qt.Key_Space)
            compare(world.preference(data.key), data.after)
            compare(control.checked, !was)
            world.setPreference(data.key, data.before)
            compare(control.checked, was, "follows what others set")
        }

        function test_choices_data() {
            return [
                { page: 0, tag: "Summaries lead with", key: "summaryUnit", press: Qt.Key_Right, before: "cost", after: "tokens" },
                { page: 1, tag: "Show", key: "menuBarStyle", press: Qt.Key_Left, before: "provider", after: "icon" },
                { page: 1, tag: "Provider", key: "pinnedProvider", press: Qt.Key_Down, before: "claude", after: "codex" },
                { page: 1, tag: "Claude", key: "menuBarWindows", press: Qt.Key_Down, before: "", after: "claude=session" },
            ]
        }
        function test_choices(data) {
            const control = onPage(data.page, data.tag)
            compare(world.preference(data.key), data.before)
            keyClick(data.press)
            compare(world.preference(data.key), data.after)
            const index = control.currentIndex
            world.setPreference(data.key, data.before)
            verify(control.currentIndex !== index, "follows what others set")
        }

        function test_choiceFollowsTheProviders() {
            const control = onPage(1, "Provider")
            compare(control.displayText, "Claude")
            world.setPreference("disabledProviders", "claude")
            compare(control.displayText, "Codex")
            compare(control.count, 1)
            world.setPreference("disabledProviders", "")
            compare(control.displayText, "Claude")
        }

        function test_criticalStaysBelowWarning() {
            const warning = onPage(1, "Warning level")
            const critical = onPage(1, "Critical level")
            keyClick(Qt.Key_End)
            compare(world.preference("criticalThreshold"), "0.2")
            fuzzyCompare(critical.value, 0.2, 1e-9)
            keyClick(Qt.Key_Right)
            compare(world.preference("criticalThreshold"), "0.2")
            fuzzyCompare(critical.value, 0.2, 1e-9)

            warning.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Home)
            compare(world.preference("warningThreshold"), "0.1")
            tryVerify(() => Math.abs(critical.value - 0.05) < 1e-9)
            keyClick(Qt.Key_End)
            compare(world.preference("warningThreshold"), "0.9")
            fuzzyCompare(warning.value, 0.9, 1e-9)
        }

        function test_switchMovesBackWhenItsSettingCannotBeHad() {
            world.blockAutostart()
            const control = onPage(0, "Start at login")
            for (let attempt = 0; attempt < 2; ++attempt) {
                keyClick(Qt.Key_Space)
                verify(!control.checked)
            }
        }

        function test_providersAreReordered() {
            const control = onPage(2, "Show Claude's limits")
            keyClick(Qt.Key_Down, Qt.AltModifier)
            compare(world.preference("providerOrder"), "codex,claude,grok,cursor")
            verify(control.activeFocus)
            keyClick(Qt.Key_Up, Qt.AltModifier)
            compare(world.preference("providerOrder"), "claude,codex,grok,cursor")
        }

        function test_usagePageOpens() {
            onPage(2, "Codex usage page")
            keyClick(Qt.Key_Return)
            compare(world.lastOpened(), "https://chatgpt.com/codex/settings/usage")
        }

        function test_previewIsAsLargeAsWhatItShows() {
            world.view.page = 1
            tryVerify(() => named("Preview: Claude 50%"))
            world.setPreference("menuBarStyle", "icon")
            tryVerify(() => named("Preview: Tokwatch"))
            world.setPreference("menuBarStyle", "provider")
        }

        function test_escapeAsksForClosing() {
            closings.clear()
            content.forceActiveFocus()
            keyClick(Qt.Key_Escape)
            compare(closings.count, 1)
        }
    }
}
