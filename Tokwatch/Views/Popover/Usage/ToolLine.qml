import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// One assistant's part of the usage.
Item {
    id: line
    required property var tool

    height: name.implicitHeight + sessions.implicitHeight + 1
    Accessible.role: Accessible.ListItem
    Accessible.name: tool.name + ", " + tool.sessions + ", " + tool.value + ", " + tool.detail

    ProviderMark {
        id: mark
        anchors { left: parent.left; verticalCenter: parent.verticalCenter }
        width: 18
        height: 18
        provider: line.tool.id
        color: Theme.colors.series[series]
    }
    Label {
        id: name
        anchors { left: mark.right; leftMargin: Theme.space.m }
        text: line.tool.name
        font.weight: Font.Medium
        Accessible.ignored: true
    }
    Label {
        id: sessions
        anchors { left: name.left; bottom: parent.bottom }
        text: line.tool.sessions
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
    Label {
        anchors { right: parent.right; baseline: name.baseline }
        text: line.tool.value
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    Label {
        anchors { right: parent.right; baseline: sessions.baseline }
        text: line.tool.detail
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
}
