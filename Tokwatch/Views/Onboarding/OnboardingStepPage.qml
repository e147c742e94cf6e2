import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// What is told about one provider.
Rectangle {
    id: page
    required property var step
    required property bool liveLimits
    signal liveLimitsToggled(bool isOn)

    color: Theme.colors.card
    radius: Theme.space.cardRadius
    border.width: 1
    border.color: Theme.colors.hairline
    Accessible.role: Accessible.Grouping
    Accessible.name: step.name

    Item {
        id: heading
        anchors { left: parent.left; right: parent.right; top: parent.top; margins: Theme.space.l }
        height: 36

        ProviderMark {
            id: mark
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            width: 28
            height: 28
            visible: !page.step.isNone
            provider: page.step.id
            color: Theme.colors.series[series]
        }
        Symbol {
            anchors.fill: mark
            visible: page.step.isNone
            name: "info"
            color: Theme.colors.secondaryText
        }
        Column {
            anchors { left: mark.right; leftMargin: Theme.space.m; right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: 1
            Label {
                width: parent.width
                text: page.step.name
                size: Theme.type.title
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
            }
            Label {
                width: parent.width
                text: page.step.subtitle
                size: Theme.type.caption
                color: Theme.colors.secondaryText
            }
        }
    }
    Rectangle {
        id: line
        anchors { left: parent.left; right: parent.right; top: heading.bottom; margins: Theme.space.l; topMargin: Theme.space.m }
        height: 1
        color: Theme.colors.hairline
    }
    Column {
        anchors { left: parent.left; right: parent.right; top: line.bottom; margins: Theme.space.l }
        spacing: Theme.space.l
        Repeater {
            model: page.step.facts
            OnboardingFactRow {
                required property var modelData
                width: parent.width
                fact: modelData
                liveLimits: page.liveLimits
                onLiveLimitsToggled: isOn => page.liveLimitsToggled(isOn)
            }
        }
    }
}
