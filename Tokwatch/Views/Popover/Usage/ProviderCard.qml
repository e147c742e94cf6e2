import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Usage

/// One provider: its limits, or why there are none and what helps.
Card {
    id: card
    required property var row
    signal acted(int action)

    function nameOf(action) {
        switch (action) {
        case ProviderAction.Retry: return "Try Again"
        case ProviderAction.AllowAccess: return "Allow Access"
        case ProviderAction.TurnOnLiveLimits: return "Turn On"
        case ProviderAction.FinishWelcome: return "Open Welcome"
        }
        return ""
    }

    padding: Theme.space.l
    spacing: Theme.space.m
    Accessible.role: Accessible.Grouping
    Accessible.name: row.name

    Item {
        width: parent.width
        height: 20

        ProviderMark {
            id: mark
            anchors.verticalCenter: parent.verticalCenter
            anchors.left: parent.left
            width: 18
            height: 18
            provider: card.row.id
            color: Theme.colors.series[series]
        }
        Label {
            id: name
            anchors { left: mark.right; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
            text: card.row.name
            size: Theme.type.title
            font.weight: Font.DemiBold
        }
        Rectangle {
            anchors { left: name.right; leftMargin: Theme.space.s; verticalCenter: parent.verticalCenter }
            visible: card.row.plan !== ""
            width: Math.min(plan.implicitWidth + 2 * 6, Math.max(0, parent.width - mark.width - name.width - note.implicitWidth - 4 * Theme.space.s))
            height: 18
            radius: 5
            color: Theme.colors.track
            Label {
                id: plan
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width - 2 * 6)
                text: card.row.plan
                size: Theme.type.caption
                font.weight: Font.Medium
                color: Theme.colors.secondaryText
            }
        }
        Label {
            id: note
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            text: card.row.asOfText
            size: Theme.type.caption
            color: Theme.colors.secondaryText
        }
    }

    Repeater {
        // By their number, so that a changed limit keeps its entry, and with it focus and whether it is open.
        model: card.row.windows.length
        LimitEntry {
            id: entry
            required property int index
            width: card.width - 2 * card.padding
            // One that is going to go keeps what it has.
            limit: index < card.row.windows.length ? card.row.windows[index] : entry.limit
        }
    }

    Item {
        visible: card.row.creditsText !== ""
        width: parent.width
        height: credits.implicitHeight
        Label {
            id: credits
            anchors { left: parent.left; right: amount.left; rightMargin: Theme.space.m }
            text: card.row.creditsLabel
            font.weight: Font.Medium
        }
        Label {
            id: amount
            anchors.right: parent.right
            text: card.row.creditsText
            color: Theme.colors.secondaryText
        }
    }

    Item {
        visible: card.row.notice !== ""
        width: parent.width
        height: Math.max(said.height, action.visible ? action.height : 0)

        Symbol {
            id: sign
            anchors.left: parent.left
            y: said.y + (notice.height / notice.lineCount - height) / 2
            name: card.row.noticeIsCalm ? "info" : "warning"
            color: card.row.noticeIsCalm ? Theme.colors.secondaryText : Theme.colors.warningText
        }
        Column {
            id: said
            anchors { left: sign.right; leftMargin: Theme.space.s; right: action.visible ? action.left : parent.right }
            anchors.rightMargin: action.visible ? Theme.space.m : 0
            anchors.verticalCenter: parent.verticalCenter
            spacing: 1
            Label {
                id: notice
                width: parent.width
                text: card.row.notice
                color: Theme.colors.secondaryText
                wrapMode: Text.Wrap
            }
            Label {
                visible: text !== ""
                width: parent.width
                text: card.row.tryText
                size: Theme.type.caption
                color: Theme.colors.secondaryText
            }
        }
        ActionButton {
            id: action
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            visible: card.row.action !== ProviderAction.None
            enabled: card.row.tryText === ""
            text: card.nameOf(card.row.action)
            onClicked: card.acted(card.row.action)
        }
    }
}
