import QtQuick
import QtTest
import Kivo.Theme

Item {
    width: 300
    height: 60

    SegmentedControl {
        id: control
        width: 300
        labels: ["One", "Two", "Three"]
        LayoutMirroring.childrenInherit: true
        onChosen: index => currentIndex = index
    }
    SignalSpy {
        id: choices
        target: control
        signalName: "chosen"
    }

    TestCase {
        name: "SegmentedControl"
        when: windowShown

        function init() {
            control.LayoutMirroring.enabled = false
            control.currentIndex = 0
            choices.clear()
        }

        function test_keys_data() {
            return [
                { tag: "right", keys: [Qt.Key_Right], index: 1, choices: 1 },
                { tag: "left at the first", keys: [Qt.Key_Left], index: 0, choices: 0 },
                { tag: "end", keys: [Qt.Key_End], index: 2, choices: 1 },
                { tag: "right at the last", keys: [Qt.Key_End, Qt.Key_Right], index: 2, choices: 1 },
                { tag: "home", keys: [Qt.Key_End, Qt.Key_Home], index: 0, choices: 2 },
                { tag: "mirrored left", mirrored: true, keys: [Qt.Key_Left], index: 1, choices: 1 },
                { tag: "mirrored right", mirrored: true, keys: [Qt.Key_End, Qt.Key_Right], index: 1, choices: 2 },
                { tag: "others are left alone", keys: [Qt.Key_Up, Qt.Key_A], index: 0, choices: 0 },
            ]
        }
        function test_keys(data) {
            control.LayoutMirroring.enabled = data.mirrored ?? false
            control.forceActiveFocus(Qt.TabFocusReason)
            for (const key of data.keys)
                keyClick(key)
            compare(control.currentIndex, data.index)
            compare(choices.count, data.choices)
        }

        function test_click_data() {
            return [
                { tag: "second", x: 150, index: 1 },
                { tag: "third", x: 290, index: 2 },
                { tag: "the chosen one", x: 20, index: 0, choices: 0 },
                { tag: "mirrored", mirrored: true, x: 20, index: 2 },
            ]
        }
        function test_click(data) {
            control.LayoutMirroring.enabled = data.mirrored ?? false
            mouseClick(control, data.x, 16)
            compare(control.currentIndex, data.index)
            compare(choices.count, data.choices ?? 1)
        }
    }
}
