import QtQuick
import Kivo.Theme
import Kivo.Settings
import Tokwatch.Common

SettingsPage {
    id: page
    required property var view
    required property bool startsAtLogin
    readonly property var shown: view.state

    title: "Widget"

    SettingsGroup {
        note: (page.shown.place && page.shown.place + " ") + "A click opens Tokwatch, a right click its menu."

        SettingsRow {
            id: desktop
            label: "Show on the desktop"
            caption: "It starts together with Tokwatch" + (page.startsAtLogin ? ", at login." : ", which does not start at login.")
            Toggle {
                text: desktop.label
                checked: page.shown.shown
                onToggled: page.view.setShown(checked)
            }
        }
        SettingsRow {
            id: size
            label: "Size"
            caption: page.shown.size === Segment.Small ? "The limit that is closest to running out."
                : page.shown.size === Segment.Medium ? "The limits of each provider."
                : "The limits of each provider, and what the last 30 days cost."
            SegmentedControl {
                name: size.label
                small: true
                segments: [{ value: Segment.Small, text: "Small" }, { value: Segment.Medium, text: "Medium" }, { value: Segment.Large, text: "Large" }]
                value: page.shown.size
                onChosen: value => page.view.setSize(value)
            }
        }
    }
}
