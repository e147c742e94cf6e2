import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover.Usage

/// The limits' bars and nothing else, for a small panel that stays above other windows.
FocusScope {
    id: panel
    required property UsageView view
    property bool isRounded: false
    signal closeRequested
    /// The pointer drags it.
    signal moveRequested

    implicitWidth: 232
    implicitHeight: bars.y + Math.max(bars.implicitHeight, nothing.visible ? nothing.implicitHeight : 0) + Theme.space.m
    focus: true
    Accessible.role: Accessible.Dialog
    Accessible.name: "Tokwatch limits"
    Keys.onEscapePressed: closeRequested()

    Rectangle {
        anchors.fill: parent
        radius: panel.isRounded ? 2 * Theme.space.radius : 0
        color: Theme.colors.canvas
        border.width: 1
        border.color: Theme.colors.outline
    }
    DragHandler {
        target: null
        onActiveChanged: if (active) panel.moveRequested()
    }
    Column {
        id: bars
        x: Theme.space.m
        y: Theme.space.s
        width: parent.width - 2 * Theme.space.m
        spacing: Theme.space.m

        Repeater {
            model: panel.view.providers
            Column {
                id: provider
                required property var row
                width: bars.width
                visible: row.windows.length > 0
                spacing: Theme.space.s
                Accessible.role: Accessible.Grouping
                Accessible.name: row.name

                Item {
                    width: parent.width
                    height: 24
                    ProviderMark {
                        id: mark
                        anchors.verticalCenter: parent.verticalCenter
                        anchors.left: parent.left
                        width: 14
                        height: 14
                        provider: provider.row.id
                        color: Theme.colors.series[series]
                    }
                    Label {
                        anchors { left: mark.right; leftMargin: 6; verticalCenter: parent.verticalCenter }
                        text: provider.row.name
                        font.weight: Font.DemiBold
                    }
                }
                Repeater {
                    model: provider.row.windows.length
                    LimitBar {
                        id: bar
                        required property int index
                        width: provider.width
                        // One that is going to go keeps what it has.
                        limit: index < provider.row.windows.length ? provider.row.windows[index] : bar.limit
                        isBrief: true
                    }
                }
            }
        }
    }
    Label {
        id: nothing
        x: bars.x
        y: bars.y
        height: 24
        visible: bars.implicitHeight === 0
        verticalAlignment: Text.AlignVCenter
        text: "No limits are known yet"
        color: Theme.colors.secondaryText
    }
    IconButton {
        anchors { right: parent.right; rightMargin: Theme.space.s; top: parent.top; topMargin: Theme.space.s }
        width: 24
        height: 24
        symbol: "close"
        text: "Unpin"
        onClicked: panel.closeRequested()
    }
}
