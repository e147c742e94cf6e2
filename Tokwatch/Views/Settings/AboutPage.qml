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
                text: page.view.version
                color: Theme.colors.secondaryText
            }
            Label {
                width: parent.width
                text: page.view.purpose
                color: Theme.colors.secondaryText
            }
        }
    }
    SettingsGroup {
        title: "Built with"
        Repeater {
            model: page.view.credits
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
        text: page.view.licence
        size: Theme.type.caption
        lineHeight: 1.3
        color: Theme.colors.secondaryText
        wrapMode: Text.Wrap
    }
}
