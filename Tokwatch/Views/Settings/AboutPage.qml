import QtQuick
import Kivo.Theme
import Kivo.Settings
import Tokwatch.Common

SettingsPage {
    id: page
    required property var view

    title: "About"

    Item {
        width: parent.width
        height: 80

        Rectangle {
            id: tile
            anchors { left: parent.left; top: parent.top }
            width: 72
            height: 72
            radius: 16
            color: Theme.colors.accent
            ProviderMark {
                anchors.centerIn: parent
                width: 44
                height: 44
                color: Theme.colors.onAccent
            }
        }
        Column {
            anchors { left: tile.right; leftMargin: Theme.space.l; right: parent.right; verticalCenter: tile.verticalCenter }
            spacing: Theme.space.xs
            Label {
                width: parent.width
                text: "Tokwatch"
                size: Theme.type.figure
                font.weight: Font.DemiBold
            }
            Label {
                width: parent.width
                text: "Version " + page.view.version
                color: Theme.colors.secondaryText
            }
            Label {
                width: parent.width
                text: "Rate limits and token usage of AI coding assistants, at a glance."
                color: Theme.colors.secondaryText
            }
        }
    }
    Loader {
        width: parent.width
        active: page.view.updates !== null
        visible: active
        sourceComponent: UpdatesGroup { view: page.view.updates }
    }
    SettingsGroup {
        title: "Built with"
        Repeater {
            model: [
                { name: "Qt", use: "Windows, network, desktop bus", licence: "LGPL 3" },
                { name: "libxcb", use: "Hot keys and windows on X11", licence: "MIT" },
                { name: "QCoro", use: "Coroutines for Qt", licence: "MIT" },
                { name: "SQLite", use: "The usage database", licence: "Public domain" },
                { name: "simdjson", use: "Reading session files", licence: "Apache 2.0" },
                { name: "JSON for Modern C++", use: "Records as text", licence: "MIT" },
                { name: "Abseil", use: "Calendars and time zones", licence: "Apache 2.0" },
                { name: "libsodium", use: "Signatures of updates", licence: "ISC" },
                { name: "CLI11", use: "The command line", licence: "BSD 3-Clause" },
            ]
            SettingsRow {
                id: credit
                required property var modelData
                implicitHeight: 36
                label: modelData.name
                Label {
                    text: credit.modelData.use
                    size: Theme.type.caption
                    color: Theme.colors.secondaryText
                }
                Label {
                    width: 88
                    text: credit.modelData.licence
                    size: Theme.type.caption
                    color: Theme.colors.secondaryText
                    horizontalAlignment: Text.AlignRight
                }
            }
        }
    }
    Label {
        anchors { left: parent.left; right: parent.right; margins: Theme.space.xs }
        text: "Free software under the MIT licence.\n© 2026 The Tokwatch developers"
        size: Theme.type.caption
        leading: 1.3
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
}
