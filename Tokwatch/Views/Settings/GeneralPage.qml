import QtQuick
import Kivo.HotKeys
import Kivo.Theme
import Kivo.Settings
import Tokwatch.Common
import Tokwatch.Settings

SettingsPage {
    id: page
    required property var view
    required property var hotKey

    title: "General"

    SettingsGroup {
        SettingsRow {
            id: login
            label: "Start at login"
            caption: page.view.state.unwritable === "" ? "" : page.view.state.unwritable + " could not be written."
            isProblem: true
            Toggle {
                text: login.label
                checked: page.view.state.startsAtLogin
                onToggled: page.view.setStartsAtLogin(checked)
            }
        }
        SettingsRow {
            id: dock
            label: "Show in the task bar"
            caption: "Tokwatch opens as a window with its own entry instead of a popover."
            Toggle {
                text: dock.label
                checked: page.view.state.showDockIcon
                onToggled: page.view.setShowDockIcon(checked)
            }
        }
    }
    SettingsGroup {
        SettingsRow {
            id: hotKeyRow
            label: "Hot key"
            caption: page.hotKey.state.caption
            isProblem: page.hotKey.state.isProblem
            HotKeyField {
                name: hotKeyRow.label
                keys: page.hotKey.state.keys
                enabled: page.hotKey.state.canRecord || page.hotKey.state.keys !== ""
                onRecorded: keys => page.hotKey.choose(keys)
                onCleared: page.hotKey.clear()
                onRefused: page.hotKey.refuse()
                onRecordingChanged: page.hotKey.setRecording(recording)
            }
        }
    }
    SettingsGroup {
        SettingsRow {
            id: theme
            label: "Theme"
            SegmentedControl {
                name: theme.label
                small: true
                segments: [{ value: WindowTone.AsDesktop, text: "Desktop" }, { value: WindowTone.Light, text: "Light" }, { value: WindowTone.Dark, text: "Dark" }]
                value: page.view.state.theme
                onChosen: value => page.view.setTheme(value)
            }
        }
        SettingsRow {
            id: unit
            label: "Summaries lead with"
            SegmentedControl {
                name: unit.label
                small: true
                segments: [{ value: Segment.Cost, text: "Cost" }, { value: Segment.Tokens, text: "Tokens" }]
                value: page.view.state.unit
                onChosen: value => page.view.setUnit(value)
            }
        }
    }
    SettingsGroup {
        title: "Where things are kept"
        note: "Both stay on this computer, readable by your account only."

        SettingsRow {
            label: "Usage data"
            caption: page.view.state.dataPlace || "In memory only, lost when Tokwatch ends"
            IconButton {
                symbol: "folder"
                text: "Show the usage data in the file manager"
                visible: page.view.state.dataPlace !== ""
                onClicked: page.view.showData()
            }
        }
        SettingsRow {
            label: "Settings"
            caption: page.view.state.settingsPlace
            IconButton {
                symbol: "folder"
                text: "Show the settings file in the file manager"
                onClicked: page.view.showSettingsFile()
            }
        }
    }
}
