import QtQuick
import Kivo.Theme
import Kivo.Settings

SettingsPage {
    id: page
    required property var view

    title: "Privacy"

    Label {
        width: parent.width
        text: "Tokwatch only sends each login to its own provider. Nothing else leaves your computer."
        size: Theme.type.title
        font.weight: Font.Medium
        leading: 1.2
        wrapMode: Text.Wrap
    }
    SettingsGroup {
        Repeater {
            model: [
                {
                    symbol: "folder",
                    title: "What is read",
                    sentence: "The session files that the assistants keep in your home directory. Of each answer, Tokwatch takes the time, the model and the token counts. What you and the assistant wrote is skipped."
                },
                {
                    symbol: "lock",
                    title: "What is asked with your logins",
                    sentence: "Claude's goes to " + page.view.claudeServer + " and Codex's to " + page.view.codexServer + ", to ask how much of your limits is left. A login is read at that moment and never stored or logged."
                },
                {
                    symbol: "layers",
                    title: "What is kept",
                    sentence: "Of 90 days, sums for each model and day and how each limit was used; which responses were counted, and how far each file was read. The days that tokwatch export has counted stay for good. Only your account can read it."
                },
                {
                    symbol: "check",
                    title: "What there is not",
                    sentence: "No account, no telemetry, no advertising, no other server" + (page.view.updates ? " but the one that is asked for new versions, if you agree on the page About." : ".")
                },
            ]
            Item {
                id: fact
                required property int index
                required property var modelData

                width: parent.width
                height: texts.height + Theme.space.l + Theme.space.m

                Rectangle {
                    anchors { left: parent.left; right: parent.right; leftMargin: Theme.space.l; rightMargin: Theme.space.l }
                    visible: fact.index > 0
                    height: 1
                    color: Theme.colors.hairline
                }
                Symbol {
                    id: sign
                    anchors { left: parent.left; leftMargin: Theme.space.l; top: texts.top }
                    name: fact.modelData.symbol
                    color: Theme.colors.accentText
                }
                Column {
                    id: texts
                    anchors { left: sign.right; leftMargin: Theme.space.m; right: parent.right; rightMargin: Theme.space.l }
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space.xs
                    Label {
                        width: parent.width
                        text: fact.modelData.title
                        font.weight: Font.DemiBold
                    }
                    Label {
                        width: parent.width
                        text: fact.modelData.sentence
                        leading: 1.2
                        color: Theme.colors.secondaryText
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }
}
