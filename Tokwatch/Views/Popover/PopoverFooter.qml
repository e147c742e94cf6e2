import QtQuick
import Kivo.Theme

/// How current everything is, and what can be done about it.
Item {
    id: footer
    required property var status
    signal refresh
    signal settings
    signal pasteSummary
    signal copySummary

    height: 44

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.colors.hairline
    }
    Column {
        anchors { left: parent.left; right: buttons.left; verticalCenter: parent.verticalCenter }
        anchors { leftMargin: Theme.space.l; rightMargin: Theme.space.m }
        spacing: Theme.space.xs

        Label {
            width: parent.width
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            text: footer.status.isIndexing ? footer.status.indexing : footer.status.updated
        }
        ProgressLine {
            visible: footer.status.isIndexing
            width: parent.width
            name: footer.status.indexing
            fraction: footer.status.indexedFraction
        }
    }
    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: Theme.space.m; verticalCenter: parent.verticalCenter }
        spacing: Theme.space.xs

        CopyMenu {
            id: copy
            name: "Copy or paste the summary"
            opensUpwards: true
            choices: [
                { text: "Paste Summary", run: () => footer.pasteSummary() },
                {
                    text: "Copy Summary",
                    run: () => {
                        footer.copySummary()
                        copy.confirm()
                    }
                }
            ]
        }
        IconButton {
            symbol: "refresh"
            text: "Refresh"
            // For one turn at least: nothing that is pressed stays silent.
            spins: footer.status.isRefreshing || turn.running
            onClicked: {
                turn.restart()
                footer.refresh()
            }
            Timer {
                id: turn
                interval: 1100
            }
        }
        IconButton {
            symbol: "gear"
            text: "Settings"
            onClicked: footer.settings()
        }
    }
}
