import QtQuick
import Kivo.Theme

/// One thing that a step tells, with the switch that it is about.
Item {
    id: row
    required property var fact
    required property bool liveLimits
    signal liveLimitsToggled(bool isOn)

    height: texts.height

    Symbol {
        id: sign
        // Centred below the heading's mark, so that all texts begin at one line.
        anchors { left: parent.left; leftMargin: 6; top: parent.top }
        name: row.fact.symbol
        color: Theme.colors.accentText
    }
    Column {
        id: texts
        anchors { left: sign.right; leftMargin: 6 + Theme.space.m; right: toggle.visible ? toggle.left : parent.right }
        anchors.rightMargin: toggle.visible ? Theme.space.l : 0
        spacing: Theme.space.xs
        Label {
            width: parent.width
            text: row.fact.title
            font.weight: Font.DemiBold
            elide: Text.ElideMiddle
        }
        Label {
            width: parent.width
            text: row.fact.sentence
            lineHeight: 1.2
            color: Theme.colors.secondaryText
            wrapMode: Text.Wrap
        }
    }
    Toggle {
        id: toggle
        anchors { right: parent.right; top: parent.top }
        visible: row.fact.isLiveLimits
        text: "Live limits"
        checked: row.liveLimits
        onToggled: row.liveLimitsToggled(checked)
    }
}
