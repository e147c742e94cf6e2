import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// What is told about one provider, or that there is none, with the switch for what is asked.
Item {
    id: row
    required property var step
    required property bool isAsked
    signal askedToggled(bool isAsked)

    readonly property bool isNone: step.id === ""

    implicitHeight: texts.height
    Accessible.role: Accessible.Grouping
    Accessible.name: step.name

    ProviderMark {
        id: mark
        anchors { left: parent.left; top: parent.top; topMargin: -1 }
        width: 18
        height: 18
        visible: !row.isNone
        provider: row.step.id
        color: Theme.colors.series[series]
    }
    Symbol {
        anchors.fill: mark
        visible: row.isNone
        name: "info"
        color: Theme.colors.secondaryText
    }
    Column {
        id: texts
        anchors { left: mark.right; leftMargin: Theme.space.m; right: toggle.visible ? toggle.left : parent.right }
        anchors.rightMargin: toggle.visible ? Theme.space.l : 0
        spacing: 3

        Item {
            width: parent.width
            height: name.implicitHeight
            Label {
                id: name
                anchors.left: parent.left
                text: row.step.name
                font.weight: Font.DemiBold
            }
            Label {
                anchors { left: name.right; leftMargin: 6; right: parent.right; baseline: name.baseline }
                text: row.step.reads
                elide: Text.ElideMiddle
                color: Theme.colors.secondaryText
            }
        }
        Label {
            width: parent.width
            visible: text !== ""
            text: row.step.asks
            size: Theme.type.caption
            leading: 1.15
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
    Toggle {
        id: toggle
        anchors { right: parent.right; verticalCenter: texts.verticalCenter }
        visible: text !== ""
        text: row.step.switchText
        checked: row.isAsked
        onToggled: row.askedToggled(checked)
    }
}
