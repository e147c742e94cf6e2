import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Usage

/// What is left of each limit, and what was used.
Item {
    id: tab
    required property UsageView view

    implicitHeight: column.naturalHeight

    function scroll(key) {
        return column.scroll(key)
    }

    ScrollColumn {
        id: column
        anchors.fill: parent
        anchors.topMargin: -ringRoom

        SummaryLine {
            width: column.width - 2 * column.inset
            visible: !summary.isEmpty
            summary: tab.view.summary
            onClicked: column.moveTo(details.y - column.ringRoom)
        }
        Repeater {
            model: tab.view.lookedAt.length > 0 ? null : tab.view.providers
            ProviderCard {
                width: column.width - 2 * column.inset
                onActed: action => tab.view.act(row.id, action)
            }
        }
        SummaryCard {
            id: details
            width: column.width - 2 * column.inset
            visible: !summary.isEmpty
            summary: tab.view.summary
            onUnitChosen: unit => tab.view.setUnit(unit)
        }
        EmptyState {
            width: column.width - 2 * column.inset
            visible: tab.view.summary.isEmpty
            sentence: tab.view.summary.period
            places: tab.view.lookedAt
            advice: tab.view.advice
            invitation: tab.view.invitation
        }
        QuietLine {
            width: column.width - 2 * column.inset
            visible: providers.length > 0 && tab.view.lookedAt.length === 0
            providers: tab.view.quiet
        }
    }
}
