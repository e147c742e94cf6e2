import QtQuick
import Kivo.Theme
import Kivo.Settings
import Tokwatch.Common

/// One provider: whether and where it is shown, what is read for it, and what can be done.
ReorderItem {
    id: item
    required property var row
    required property var view

    contentHeight: card.height
    Accessible.role: Accessible.Grouping
    Accessible.name: row.name

    Rectangle {
        id: card
        width: parent.width
        height: rows.height
        color: Theme.colors.card
        radius: Theme.space.cardRadius
        border.width: 1
        border.color: item.dragging ? Theme.colors.outline : Theme.colors.hairline

        Column {
            id: rows
            width: parent.width

            Item {
                width: parent.width
                height: 56

                ReorderGrip {
                    id: grip
                    anchors { left: parent.left; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
                    item: item
                    name: item.row.name
                }
                ProviderMark {
                    id: mark
                    anchors { left: grip.right; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
                    width: 24
                    height: 24
                    provider: item.row.id
                    color: item.row.isEnabled ? Theme.colors.series[series] : Theme.colors.muted
                }
                Column {
                    anchors { left: mark.right; leftMargin: Theme.space.m; right: shows.left; rightMargin: Theme.space.m }
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 1
                    Label {
                        width: parent.width
                        text: item.row.name
                        font.weight: Font.DemiBold
                    }
                    Label {
                        width: parent.width
                        text: item.row.isFound ? "Found on this computer" : "Not found on this computer"
                        size: Theme.type.caption
                        color: Theme.colors.secondaryText
                    }
                }
                Label {
                    id: shows
                    anchors { right: toggle.left; rightMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
                    text: item.row.publishesLimits ? "Show limits" : "Show in Usage"
                    size: Theme.type.caption
                    color: Theme.colors.secondaryText
                    Accessible.ignored: true
                    TapHandler { onTapped: toggle.flip() }
                }
                Toggle {
                    id: toggle
                    anchors { right: parent.right; rightMargin: Theme.space.l; verticalCenter: parent.verticalCenter }
                    text: item.row.name + ": " + shows.text
                    checked: item.row.isEnabled
                    onToggled: item.view.setEnabled(item.row.id, checked)
                }
            }
            SettingsRow {
                id: live
                visible: item.row.canTurnLiveLimitsOff
                enabled: item.row.isEnabled
                label: "Live limits"
                caption: "Asks Anthropic how much is left, with the login that Claude Code stored. Without it there is no number."
                Toggle {
                    text: live.label
                    checked: item.row.liveLimits
                    onToggled: item.view.setClaudeLiveLimits(checked)
                }
            }
            Item {
                width: parent.width
                height: sources.height + 2 * Theme.space.m

                Rectangle {
                    anchors { left: parent.left; right: parent.right; leftMargin: Theme.space.l; rightMargin: Theme.space.l }
                    height: 1
                    color: Theme.colors.hairline
                }
                Column {
                    id: sources
                    anchors { left: parent.left; right: parent.right; leftMargin: Theme.space.l; rightMargin: Theme.space.l }
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: Theme.space.s

                    Label {
                        width: parent.width
                        text: item.row.reads
                        size: Theme.type.caption
                        color: Theme.colors.secondaryText
                        wrapMode: Text.Wrap
                    }
                    Label {
                        visible: text !== ""
                        width: parent.width
                        text: item.row.note
                        size: Theme.type.caption
                        color: Theme.colors.secondaryText
                        wrapMode: Text.Wrap
                    }
                    Row {
                        anchors.left: parent.left
                        spacing: Theme.space.l
                        LinkButton {
                            text: "Usage page"
                            size: Theme.type.caption
                            Accessible.name: item.row.name + " usage page"
                            onClicked: item.view.openUsagePage(item.row.id)
                        }
                        LinkButton {
                            visible: item.row.canReread && !item.row.isRereading
                            text: "Re-read files"
                            size: Theme.type.caption
                            Accessible.name: "Re-read " + item.row.name + "'s files"
                            onClicked: item.view.reread(item.row.id)
                        }
                        Row {
                            visible: item.row.isRereading
                            spacing: Theme.space.s
                            Spinner {
                                anchors.verticalCenter: parent.verticalCenter
                                width: 12
                                height: 12
                                running: item.row.isRereading
                            }
                            Label {
                                text: item.row.rereadingText
                                size: Theme.type.caption
                                color: Theme.colors.secondaryText
                            }
                            ProgressLine {
                                visible: fraction > 0
                                anchors.verticalCenter: parent.verticalCenter
                                width: 120
                                name: item.row.rereadingText
                                fraction: item.row.rereadFraction
                            }
                        }
                    }
                }
            }
        }
    }
}
