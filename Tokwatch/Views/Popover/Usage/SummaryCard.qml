import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// The usage of the last days in one look.
Card {
    id: card
    required property var summary
    signal unitChosen(int unit)

    spacing: Theme.space.m

    Item {
        width: parent.width
        height: unit.implicitHeight
        Label {
            anchors { left: parent.left; right: unit.left; verticalCenter: parent.verticalCenter }
            text: "Where it went"
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        SegmentedControl {
            id: unit
            anchors.right: parent.right
            small: true
            name: "Unit"
            segments: [{ value: Segment.Cost, text: "Cost" }, { value: Segment.Tokens, text: "Tokens" }]
            value: card.summary.unit
            onChosen: value => card.unitChosen(value)
        }
    }

    SegmentBar {
        width: parent.width
        segments: card.summary.segments
    }

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.colors.hairline
    }

    Column {
        width: parent.width
        spacing: Theme.space.m
        Repeater {
            model: card.summary.tools
            ToolLine {
                required property var modelData
                width: card.width - 2 * card.padding
                tool: modelData
            }
        }
    }

    Column {
        width: parent.width
        spacing: Theme.space.xs
        Label {
            width: parent.width
            visible: text !== ""
            text: card.summary.exclusion
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
        LinkButton {
            id: about
            anchors.left: parent.left
            text: "About the API estimate"
            size: Theme.type.caption
            checkable: true
        }
        Label {
            width: parent.width
            visible: about.checked
            text: "What these tokens would cost on each provider's pay-as-you-go API. Not what your subscription costs."
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
}
