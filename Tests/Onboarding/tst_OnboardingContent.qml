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
            welcome.back()
            ends.clear()
            closings.clear()
        }

        function test_hasItsSize() {
            compare(content.implicitWidth, 500)
            compare(content.implicitHeight, 400)
        }

        function test_returnLeadsToTheEnd() {
            named("Live limits").forceActiveFocus()
            verify(named("Claude"))
            verify(!named("Back"))
            keyClick(Qt.Key_Return)
            verify(named("Grok"))
            verify(!named("Skip"))
            compare(ends.count, 0)
            named("Start Using Tokwatch").forceActiveFocus()
            keyClick(Qt.Key_Return)
            compare(ends.count, 1)
        }

        function test_backAndSkip() {
            mouseClick(named("Continue"))
            tryVerify(() => named("Back").x < named("Start Using Tokwatch").x)
            mouseClick(named("Back"))
            verify(named("Claude"))
            verify(named("Continue").activeFocus, "not left with what is gone")
            mouseClick(named("Skip"))
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

        function test_escapeOnlyCloses() {
            content.forceActiveFocus()
            keyClick(Qt.Key_Escape)
            compare(closings.count, 1)
            compare(ends.count, 0)
        }
    }
}
