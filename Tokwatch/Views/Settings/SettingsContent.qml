import QtQuick
import Kivo.Settings
import Tokwatch.Settings

/// All of the settings window.
SettingsFrame {
    id: settings
    required property SettingsView view

    name: "Tokwatch Settings"
    warning: view.unsaved
    currentIndex: view.page
    onChosen: index => view.page = index
    onCloseRequested: view.closeRequested()
    onQuitRequested: view.quitRequested()

    SettingsSection {
        title: "General"
        symbol: "gear"
        page: Component { GeneralPage { view: settings.view.general; hotKey: settings.view.hotKey } }
    }
    SettingsSection {
        title: "Panel"
        symbol: "window"
        page: Component { MenuBarPage { view: settings.view.menuBar } }
    }
    SettingsSection {
        title: "Notifications"
        symbol: "bell"
        page: Component { AlertsPage { view: settings.view.alerts } }
    }
    SettingsSection {
        title: "Widget"
        symbol: "gauge.with.dots.needle.67percent"
        page: Component { WidgetPage { view: settings.view.widget; startsAtLogin: settings.view.general.state.startsAtLogin } }
    }
    SettingsSection {
        title: "Providers"
        symbol: "layers"
        page: Component { ProvidersPage { view: settings.view.providers } }
    }
    SettingsSection {
        title: "Privacy"
        symbol: "lock"
        page: Component { PrivacyPage { view: settings.view } }
    }
    SettingsSection {
        title: "About"
        symbol: "info"
        page: Component { AboutPage { view: settings.view } }
    }
}
