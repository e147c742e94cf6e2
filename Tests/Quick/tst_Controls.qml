import QtQuick
import Kivo.Theme

Column {
    width: 400
    LayoutMirroring.enabled: test.mirrored
    LayoutMirroring.childrenInherit: true

    SegmentedControl {
        id: segments
        property alias got: segments.value
        width: 300
        segments: ["One", "Two", "Three"].map((text, value) => ({ value, text }))
        onChosen: chosen => value = chosen
    }
    ValueSlider {
        id: slider
        property alias got: slider.amount
        width: 218 // of which the handle's 18 are no scale
        stepSize: 0.01
        lowest: 0.1
        highest: 0.5
        onChosen: amount => slider.amount = amount
    }

    Look {
        id: test
        name: "Controls"
        property bool mirrored: false

        function init() {
            segments.value = 0
            slider.amount = 0.25
        }

        function test_keys_data() {
            return [
                { tag: "left at the first", on: segments, keys: [Qt.Key_Left], got: 0 },
                { tag: "right at the last", on: segments, keys: [Qt.Key_End, Qt.Key_Right], got: 2 },
                { tag: "left, mirrored", on: segments, mirrored: true, keys: [Qt.Key_Left], got: 1 },
                { tag: "slider beyond the end", on: slider, keys: [Qt.Key_End, Qt.Key_Right], got: 0.5 },
                { tag: "slider page up", on: slider, keys: [Qt.Key_PageUp], got: 0.35 },
                { tag: "slider pages down", on: slider, keys: [Qt.Key_PageDown, Qt.Key_PageDown], got: 0.1 },
                { tag: "slider right, mirrored", on: slider, mirrored: true, keys: [Qt.Key_Right], got: 0.24 },
            ]
        }
        function test_keys(data) {
            mirrored = data.mirrored ?? false
            type(data.keys, data.on)
            fuzzyCompare(data.on.got, data.got, 1e-9)
            fuzzyCompare(slider.value, slider.amount, 1e-9)
        }

        function test_pointer() {
            mirrored = false
            const at = fraction => 9 + 200 * fraction
            mouseDrag(slider, at(0.25), 12, at(0.75) - at(0.25), 0)
            fuzzyCompare(slider.position, 0.5, 1e-9)
            mirrored = true
            mouseClick(segments, 20, 16)
            compare(segments.value, 2)
        }
    }
}
