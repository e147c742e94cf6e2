import QtQuick
import Kivo.Theme
import Kivo.Settings
import Tokwatch.Common
import Tokwatch.Settings

SettingsPage {
    id: page
    required property var view
    readonly property var shown: view.state

    title: "Panel"

    pinned: Column {
        width: parent.width
        spacing: Theme.space.s
        Accessible.role: Accessible.Graphic
        Accessible.name: "Preview: " + page.shown.preview.spoken

        Row {
            width: parent.width
            spacing: Theme.space.m
            PanelStrip {
                width: (parent.width - parent.spacing) / 2
                title: page.shown.preview
                dark: false
            }
            PanelStrip {
                width: (parent.width - parent.spacing) / 2
                title: page.shown.preview
                dark: true
            }
        }
        Label {
            anchors { left: parent.left; right: parent.right; margins: Theme.space.xs }
            text: page.shown.preview.isSample ? "A sample, until your limits are known."
                : page.shown.preview.missing !== "" ? page.shown.preview.missing
                : page.shown.preview.percent < 0 ? "Without a number, the sign stands alone."
                : "Panels that give each item a square show the number alone."
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }

    SettingsGroup {
        SettingsRow {
            id: style
            label: "Show"
            SegmentedControl {
                name: style.label
                small: true
                segments: [{ value: Segment.IconOnly, text: "Icon only" }, { value: Segment.LimitLeft, text: "Limit left" }]
                value: page.shown.style
                onChosen: value => page.view.setStyle(value)
            }
        }
        SettingsRow {
            id: provider
            label: "Provider"
            caption: page.shown.standIn
            enabled: page.shown.showsProvider
            ChoiceBox {
                name: provider.label
                choices: page.shown.providers
                current: page.shown.provider
                onChosen: id => page.view.setProvider(id)
            }
        }
        SettingsRow {
            id: reset
            label: "Show the time until the reset"
            enabled: page.shown.showsProvider
            Toggle {
                text: reset.label
                checked: page.shown.showResetTime
                onToggled: page.view.setShowResetTime(checked)
            }
        }
    }

    SettingsGroup {
        title: "Limit shown"
        note: "Lowest left picks whichever limit is closest to running out."
        visible: page.view.windows.count > 0

        Repeater {
            model: page.view.windows
            SettingsRow {
                id: window
                required property var row
                label: row.name
                ChoiceBox {
                    name: window.label
                    choices: [{ id: "", label: "Lowest left" }, ...window.row.windows]
                    current: window.row.current
                    onChosen: id => page.view.setWindow(window.row.id, id)
                }
            }
        }
    }

    SettingsGroup {
        title: "Colour"
        note: "A limit turns yellow at the warning level and red at the critical level."

        SettingsRow {
            id: tint
            label: "Tint the item when a limit runs low"
            Toggle {
                text: tint.label
                checked: page.shown.tint
                onToggled: page.view.setTint(checked)
            }
        }
        ThresholdRow {
            label: "Warning level"
            caption: "When this much is left"
            amount: page.shown.warning
            amountText: page.shown.warningText
            fill: Theme.colors.warning
            from: 0
            to: page.view.highestWarning
            lowest: page.view.lowestWarning
            highest: page.view.highestWarning
            stepSize: page.view.step
            onChosen: amount => page.view.setWarning(amount)
        }
        ThresholdRow {
            label: "Critical level"
            caption: "Critical stays below warning"
            amount: page.shown.critical
            amountText: page.shown.criticalText
            fill: Theme.colors.critical
            from: 0
            to: page.view.highestWarning
            lowest: page.view.lowestCritical
            highest: page.shown.highestCritical
            stepSize: page.view.step
            onChosen: amount => page.view.setCritical(amount)
        }
    }
}
