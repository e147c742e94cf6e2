import QtQuick
import QtQuick.Templates as T
import Kivo.Theme
import Tokwatch.Popover

/// What is left of each limit, and what was used.
Item {
    id: tab
    required property UsageView view

    implicitHeight: column.height

    Flickable {
        anchors.fill: parent
        contentHeight: column.height
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height
        T.ScrollBar.vertical: ThinScrollBar {}

        Column {
            id: column
            x: Theme.space.l
            width: tab.width - 2 * Theme.space.l
            bottomPadding: Theme.space.l
            spacing: Theme.space.m

            Repeater {
                model: tab.view.lookedAt.length > 0 ? null : tab.view.providers
                ProviderCard {
                    width: column.width
                    onActed: action => tab.view.act(row.id, action)
                }
            }
            SummaryCard {
                width: column.width
                visible: !summary.isEmpty
                summary: tab.view.summary
                estimateTitle: tab.view.estimateTitle
                estimateExplanation: tab.view.estimateExplanation
                onToggled: tab.view.toggleUnit()
            }
            EmptyState {
                width: column.width
                visible: tab.view.summary.isEmpty
                sentence: tab.view.summary.period
                places: tab.view.lookedAt
            }
        }
    }
}
