import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// One row of the breakdown. Kept light: thousands of them pass by while scrolling.
Item {
    id: delegate
    required property int index
    required property var row
    property bool isCurrent: false
    readonly property int inset: Theme.space.l
    readonly property bool isModel: row.provider !== ""
    readonly property bool isRanked: row.rank !== ""
    readonly property alias isShortened: title.truncated

    Accessible.role: Accessible.ListItem
    Accessible.name: row.spoken
    Accessible.focusable: true
    Accessible.focused: isCurrent

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space.xs
        anchors.rightMargin: Theme.space.xs
        visible: delegate.isCurrent
        radius: Theme.space.s
        color: "transparent"
        border.width: 2
        border.color: Theme.colors.focus
    }
    Label {
        id: rank
        visible: delegate.isRanked
        anchors { left: parent.left; leftMargin: delegate.inset; baseline: title.baseline }
        width: 28
        text: delegate.row.rank
        elide: Text.ElideNone
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
    ProviderMark {
        id: mark
        visible: delegate.isModel
        anchors { left: rank.right; verticalCenter: title.verticalCenter }
        provider: delegate.row.provider
        color: Theme.colors.series[series]
    }
    Label {
        id: title
        anchors {
            left: delegate.isModel ? mark.right : delegate.isRanked ? rank.right : parent.left
            leftMargin: delegate.isModel ? Theme.space.s : delegate.isRanked ? 0 : delegate.inset
            right: value.left
            rightMargin: Theme.space.m
            top: parent.top
            topMargin: Theme.space.s
        }
        text: delegate.row.title
        elide: Text.ElideMiddle
        Accessible.ignored: true
    }
    Label {
        id: value
        anchors { right: parent.right; rightMargin: delegate.inset; baseline: title.baseline }
        text: delegate.row.value
        font.weight: Font.DemiBold
        Accessible.ignored: true
    }
    Rectangle {
        id: bar
        anchors { left: title.left; right: parent.right; rightMargin: 176; bottom: parent.bottom; bottomMargin: 13 }
        height: 4
        radius: 2
        color: Theme.colors.track
        Rectangle {
            anchors.left: parent.left
            width: Math.max(delegate.row.fraction > 0 ? height : 0, delegate.row.fraction * parent.width)
            height: parent.height
            radius: 2
            color: delegate.isModel ? Theme.colors.series[mark.series] : Theme.colors.accent
        }
    }
    Label {
        id: share
        anchors { left: bar.right; verticalCenter: bar.verticalCenter }
        width: 52
        horizontalAlignment: Text.AlignRight
        text: delegate.row.share
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
    Label {
        anchors { left: share.right; right: value.right; verticalCenter: bar.verticalCenter }
        horizontalAlignment: Text.AlignRight
        text: delegate.row.note
        size: Theme.type.caption
        color: Theme.colors.secondaryText
        Accessible.ignored: true
    }
}
