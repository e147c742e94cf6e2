import QtQuick
import Kivo.Theme
import Kivo.Settings

/// Whether a feed is asked for new versions, and what it told last.
SettingsGroup {
    id: group
    required property var view
    readonly property var shown: view.state

    title: "Updates"
    note: shown.privacy

    SettingsRow {
        id: daily
        label: "Look for a new version once a day"
        Toggle {
            text: daily.label
            checked: group.shown.isAgreed
            onToggled: group.view.setAgreed(checked)
        }
    }
    SettingsRow {
        visible: group.shown.isAgreed
        label: group.shown.headline
        caption: group.shown.caption
        isProblem: group.shown.isProblem
        ActionButton {
            visible: !group.shown.hasNews
            enabled: group.shown.mayCheck
            text: "Check Now"
            onClicked: group.view.check()
        }
        ActionButton {
            visible: group.shown.hasNews
            prominent: true
            text: "What's New"
            onClicked: group.view.openPage()
        }
    }
    Item {
        visible: group.shown.isAgreed && group.shown.notes !== ""
        width: group.width
        height: notes.height + Theme.space.l
        Label {
            id: notes
            x: Theme.space.l
            width: parent.width - 2 * x
            text: group.shown.notes
            size: Theme.type.caption
            leading: 1.2
            maximumLineCount: 12
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
}
