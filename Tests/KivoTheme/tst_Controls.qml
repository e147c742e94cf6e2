import QtQuick
import QtTest
import Kivo.Theme

Item {
    id: window
    width: 400
    height: 300

    property bool isOn: false
    property int asked: 0

    Column {
        spacing: 12
        Toggle {
            id: toggle
            text: "Limits"
            checked: window.isOn
            onToggled: window.asked++
        }
        ValueSlider {
            id: slider
            width: 218 // of which the handle's 18 are no scale
            from: 0
            to: 1
            stepSize: 0.01
            lowest: 0.1
            highest: 0.5
            amount: 0.25
            onChosen: amount => slider.amount = amount
        }
        ChoiceBox {
            id: box
            property int chosen: -1
            name: "Provider"
            model: ["One", "Two", "Three"]
            onActivated: index => chosen = index
        }
        ActionButton {
            id: button
            property int clicks: 0
            text: "Go"
            onClicked: clicks++
        }
    }

    TestCase {
        id: test
        name: "Controls"
        when: windowShown

        function init() {
            window.isOn = false
            window.asked = 0
            slider.amount = 0.25
            box.currentIndex = 0
            box.chosen = -1
            window.LayoutMirroring.enabled = false
            window.LayoutMirroring.childrenInherit = true
        }

        function test_toggleByPointerAndKey() {
            mouseClick(toggle)
            compare(window.asked, 1)
            verify(toggle.checked)
            toggle.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Space)
            compare(window.asked, 2)
            verify(!toggle.checked)
        }

        function test_toggleFollowsWhatItShows() {
            window.isOn = true
            verify(toggle.checked)
            mouseClick(toggle)
            window.isOn = false
            window.isOn = true
            verify(toggle.checked, "a click did not end the binding")
        }

        function test_sliderStaysWithinItsPart_data() {
            return [
                { tag: "right", keys: [Qt.Key_Right], amount: 0.26 },
                { tag: "left", keys: [Qt.Key_Left, Qt.Key_Left], amount: 0.23 },
                { tag: "end", keys: [Qt.Key_End], amount: 0.5 },
                { tag: "home", keys: [Qt.Key_Home], amount: 0.1 },
                { tag: "beyond the end", keys: [Qt.Key_End, Qt.Key_Right], amount: 0.5 },
                { tag: "page up", keys: [Qt.Key_PageUp], amount: 0.35 },
                { tag: "page down", keys: [Qt.Key_PageDown, Qt.Key_PageDown], amount: 0.1 },
                { tag: "mirrored", mirrored: true, keys: [Qt.Key_Right], amount: 0.24 },
            ]
        }
        function test_sliderStaysWithinItsPart(data) {
            window.LayoutMirroring.enabled = data.mirrored ?? false
            slider.forceActiveFocus(Qt.TabFocusReason)
            for (const key of data.keys)
                keyClick(key)
            fuzzyCompare(slider.amount, data.amount, 1e-9)
            fuzzyCompare(slider.value, data.amount, 1e-9)
        }

        function test_sliderByPointer() {
            const at = fraction => 9 + 200 * fraction
            mouseDrag(slider, at(0.25), 12, at(0.75) - at(0.25), 0)
            fuzzyCompare(slider.amount, 0.5, 1e-9)
            fuzzyCompare(slider.position, 0.5, 1e-9)
            mouseDrag(slider, at(0.5), 12, at(0.3) - at(0.5), 0)
            fuzzyCompare(slider.amount, 0.3, 1e-9)
        }

        function test_sliderShowsAmountsThatOthersSet() {
            slider.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Right)
            slider.amount = 0.4
            fuzzyCompare(slider.value, 0.4, 1e-9)
        }

        function test_choiceBoxByKeys() {
            box.forceActiveFocus(Qt.TabFocusReason)
            keyClick(Qt.Key_Down)
            compare(box.chosen, 1)
            keyClick(Qt.Key_Space)
            tryCompare(box.popup, "opened", true)
            keyClick(Qt.Key_Down)
            keyClick(Qt.Key_Return)
            compare(box.chosen, 2)
            tryCompare(box.popup, "visible", false)
            keyClick(Qt.Key_Space)
            tryCompare(box.popup, "opened", true)
            keyClick(Qt.Key_Escape)
            tryCompare(box.popup, "visible", false)
            compare(box.currentIndex, 2)
        }

        function test_choiceBoxByPointer() {
            mouseClick(box)
            tryCompare(box.popup, "opened", true)
            tryVerify(() => box.popup.contentItem.itemAtIndex(1))
            mouseClick(box.popup.contentItem.itemAtIndex(1))
            compare(box.chosen, 1)
            compare(box.displayText, "Two")
        }

        function test_buttonByKeys() {
            button.forceActiveFocus(Qt.TabFocusReason)
            const before = button.clicks
            keyClick(Qt.Key_Return)
            keyClick(Qt.Key_Space)
            compare(button.clicks, before + 2)
        }
    }
}
