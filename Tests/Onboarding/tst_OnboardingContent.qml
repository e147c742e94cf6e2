import QtQuick
import QtTest
import Kivo.Theme
import Tokwatch.Onboarding

Item {
    width: content.implicitWidth
    height: content.implicitHeight

    OnboardingContent {
        id: content
        anchors.fill: parent
        view: welcome
    }
    SignalSpy { id: ends; target: welcome; signalName: "finished" }
    SignalSpy { id: closings; target: welcome; signalName: "closeRequested" }

    TestCase {
        name: "OnboardingContent"
        when: windowShown

        /// The visible control that a screen reader calls so.
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
        function init() {
            ends.clear()
            closings.clear()
        }

        function test_isOnePageOfItsSize() {
            compare([content.implicitWidth, content.implicitHeight], [500, 400])
            verify(named("Claude") && named("Grok"))
        }

        function test_returnEndsItWhereverTheFocusIs_data() {
            return [{ tag: "Live limits" }, { tag: "Start at login" }, { tag: "Start Using Tokwatch" }]
        }
        function test_returnEndsItWhereverTheFocusIs(data) {
            named(data.tag).forceActiveFocus()
            keyClick(Qt.Key_Return)
            compare(ends.count, 1)
        }

        function test_liveLimits() {
            const toggle = named("Live limits")
            verify(toggle.checked)
            mouseClick(toggle)
            verify(!welcome.liveLimits)
            welcome.liveLimits = true
            verify(toggle.checked)
        }

        function test_startAtLogin() {
            for (const starts of [true, false]) {
                mouseClick(named("Start at login"))
                compare(welcome.startsAtLogin, starts)
            }
        }

        function test_escapeOnlyCloses() {
            content.forceActiveFocus()
            keyClick(Qt.Key_Escape)
            compare(closings.count, 1)
            compare(ends.count, 0)
        }
    }
}
