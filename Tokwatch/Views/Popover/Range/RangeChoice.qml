import QtQuick
import Kivo.Theme
import Tokwatch.Popover.Range

/// The choice of days: side by side, or as a box where there is less room.
Loader {
    id: choice
    required property ShownRange range
    property bool isBox: false

    readonly property string name: "Days"
    readonly property var all: [
        { value: ShownRange.Today, text: "Today" },
        { value: ShownRange.Week, text: "7 days" },
        { value: ShownRange.Month, text: "30 days" },
        { value: ShownRange.Quarter, text: "90 days" }
    ]

    sourceComponent: isBox ? box : segments

    Component {
        id: segments
        SegmentedControl {
            small: true
            name: choice.name
            segments: choice.all
            value: choice.range.days
            onChosen: value => choice.range.days = value
        }
    }
    Component {
        id: box
        ChoiceBox {
            small: true
            name: choice.name
            choices: choice.all.map(each => ({ id: String(each.value), label: each.text }))
            current: String(choice.range.days)
            onChosen: id => choice.range.days = Number(id)
        }
    }
}
