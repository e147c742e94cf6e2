import QtQuick
import Kivo.Theme
import Kivo.Settings

SettingsPage {
    id: page
    required property var view
    readonly property var shown: view.state

    title: "Notifications"

    SettingsGroup {
        title: "Notify me when"
        note: "Each is told once until the limit resets. The levels are set on the page Panel."

        Repeater {
            model: [
                { id: "usedUp", label: "A limit is used up", caption: "" },
                { id: "critical", label: "A limit reaches the critical level", caption: "" },
                { id: "warning", label: "A limit reaches the warning level", caption: "" },
                { id: "runsOut", label: "A limit will run out within the hour", caption: "By how it was used so far." },
                { id: "reset", label: "A limit has reset", caption: "Only where it was critical." },
                { id: "signIn", label: "A sign-in is needed", caption: "" },
            ]
            SettingsRow {
                id: kind
                required property var modelData
                label: modelData.label
                caption: modelData.caption
                Toggle {
                    text: kind.label
                    checked: page.shown.wanted.includes(kind.modelData.id)
                    onToggled: page.view.setWanted(kind.modelData.id, checked)
                }
            }
        }
    }
    SettingsGroup {
        note: "What still holds when they end is told then."

        SettingsRow {
            id: quiet
            label: "Quiet hours"
            Toggle {
                text: quiet.label
                checked: page.shown.quietHours
                onToggled: page.view.setQuietHours(checked)
            }
        }
        SettingsRow {
            label: "From"
            enabled: page.shown.quietHours
            ChoiceBox {
                name: "Quiet hours from"
                implicitWidth: 96
                choices: page.shown.times
                current: page.shown.quietFrom
                onChosen: time => page.view.setQuietFrom(time)
            }
        }
        SettingsRow {
            label: "Until"
            enabled: page.shown.quietHours
            ChoiceBox {
                name: "Quiet hours until"
                implicitWidth: 96
                choices: page.shown.times
                current: page.shown.quietUntil
                onChosen: time => page.view.setQuietUntil(time)
            }
        }
    }
}
