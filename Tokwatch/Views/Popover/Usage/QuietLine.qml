import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// The providers that have no limits to show.
Flow {
    id: quiet
    required property var providers

    leftPadding: Theme.space.l
    rightPadding: Theme.space.l
    spacing: Theme.space.s

    Repeater {
        model: quiet.providers
        Row {
            id: entry
            required property var modelData
            rightPadding: Theme.space.s
            spacing: 5
            ProviderMark {
                anchors.verticalCenter: parent.verticalCenter
                width: 13
                height: 13
                provider: entry.modelData.id
                color: Theme.colors.series[series]
            }
            Label {
                text: entry.modelData.text
                size: Theme.type.caption
                color: Theme.colors.secondaryText
            }
        }
    }
}
