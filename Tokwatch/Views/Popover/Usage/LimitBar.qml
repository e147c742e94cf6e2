import QtQuick
import Kivo.Theme
import Tokwatch.Common

/// One limit: how much is left, where time stands, when it starts anew.
Column {
    id: bar
    required property var limit
    property bool opens: false ///< it can be opened
    property bool isOpen: false
    property bool isBrief: false ///< without what is said below the bar

    readonly property color fill: limit.fill(Theme.colors)
    readonly property color figure: limit.figure(Theme.colors)

    spacing: 6
    Accessible.role: Accessible.ProgressBar
    Accessible.name: limit.spoken

    Item {
        width: parent.width
        height: label.implicitHeight
        Label {
            id: label
            anchors { left: parent.left; right: remaining.left; rightMargin: Theme.space.m + (bar.opens ? 16 : 0) }
            text: bar.limit.label
            font.weight: Font.Medium
            Accessible.ignored: true
            HoverHandler { id: overLabel }
            HoverTip { text: label.text; wanted: label.truncated && overLabel.hovered; widest: bar.width }
        }
        Symbol {
            anchors { left: label.left; leftMargin: Math.min(label.implicitWidth, label.width) + 4; verticalCenter: label.verticalCenter }
            width: 12
            height: 12
            visible: bar.opens
            name: "chevron"
            rotation: bar.isOpen ? 180 : 0
            color: Theme.colors.secondaryText
        }
        Label {
            id: remaining
            anchors { right: parent.right; baseline: label.baseline }
            text: bar.limit.leftText + " left"
            font.weight: Font.DemiBold
            color: bar.figure
            Accessible.ignored: true
        }
    }

    Item {
        width: parent.width
        height: 10
        Rectangle {
            id: track
            y: 1
            width: parent.width
            height: 8
            radius: 4
            color: Theme.colors.track
            clip: true
            Rectangle {
                anchors.left: parent.left
                width: bar.limit.leftFraction > 0 ? Math.max(height, parent.width * bar.limit.leftFraction) : 0
                height: parent.height
                radius: 4
                color: bar.fill
            }
        }
        Rectangle {
            visible: bar.limit.timeLeftFraction >= 0
            anchors.left: parent.left
            anchors.leftMargin: Math.round(bar.limit.timeLeftFraction * (parent.width - width))
            y: -2
            width: 4
            height: 14
            radius: 2
            color: Theme.colors.timeMark
            border.width: 1
            border.color: Theme.colors.card

            Item {
                anchors.centerIn: parent
                width: 20
                height: 20
                HoverHandler { id: overTime }
                HoverTip { text: bar.limit.timeText; wanted: overTime.hovered }
            }
        }
    }

    Item {
        width: parent.width
        // Side by side where both fit, so that neither is cut.
        readonly property bool isTight: pace.width + 5 + caption.implicitWidth + Theme.space.s + reset.implicitWidth > width
        height: reset.y + reset.implicitHeight
        visible: !bar.isBrief && (bar.limit.resetText !== "" || bar.limit.paceCaption !== "")

        Symbol {
            id: pace
            anchors { left: parent.left; verticalCenter: caption.verticalCenter }
            width: 14
            height: 14
            visible: bar.limit.paceSymbol !== ""
            name: bar.limit.paceSymbol
            color: caption.color
        }
        Item {
            anchors { left: pace.left; top: caption.top; bottom: caption.bottom }
            width: pace.width + 5 + Math.min(caption.width, caption.implicitWidth)
            HoverHandler { id: overPace }
            HoverTip { text: bar.limit.paceText; wanted: overPace.hovered }
        }
        Label {
            id: caption
            anchors { left: pace.right; leftMargin: 5 }
            text: bar.limit.paceCaption
            size: Theme.type.caption
            color: bar.limit.isAhead && !bar.limit.isOld ? Theme.colors.warningText : Theme.colors.secondaryText
            Accessible.ignored: true
        }
        Label {
            id: reset
            anchors.right: parent.right
            y: parent.isTight ? caption.implicitHeight + 2 : 0
            text: bar.limit.resetText
            size: Theme.type.caption
            color: Theme.colors.secondaryText
            Accessible.ignored: true
        }
    }

    Label {
        width: parent.width
        visible: !bar.isBrief && text !== ""
        text: bar.limit.runOutText
        size: Theme.type.caption
        font.weight: Font.Medium
        color: bar.limit.level === Level.Critical ? Theme.colors.criticalText : Theme.colors.warningText
        Accessible.ignored: true
    }
}
