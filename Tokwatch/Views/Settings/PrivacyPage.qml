import QtQuick
import Kivo.Theme
import Kivo.Settings

SettingsPage {
    id: page
    required property var view

    title: "Privacy"

    Label {
        width: parent.width
        text: page.view.promise
        size: Theme.type.title
        font.weight: Font.Medium
        lineHeight: 1.2
        wrapMode: Text.Wrap
    }
    SettingsGroup {
        Repeater {
            model: page.view.facts
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
                        lineHeight: 1.2
                        color: Theme.colors.secondaryText
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }
}
