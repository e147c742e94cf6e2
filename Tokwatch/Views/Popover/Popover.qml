import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Popover
import Tokwatch.Popover.Models
import Tokwatch.Popover.Stats
import Tokwatch.Popover.Usage

/// The whole popover: tabs above, what is going on below, one tab's content between them.
FocusScope {
    id: popover
    required property PopoverView view
    property bool isRounded: false
    signal closeRequested

    readonly property int edges: tabs.height + 2 * Theme.space.m + banner.height + footer.height

    implicitWidth: 420
    implicitHeight: edges + (pages.current?.implicitHeight ?? 0)
    focus: true

    Accessible.role: Accessible.Dialog
    Accessible.name: "Tokwatch"
    // Where there is no status area, the program ends with its window: not by a key for less.
    Keys.onEscapePressed: if (view.hostAdvice === "") closeRequested()
    Keys.forwardTo: [tabs]
    // What nothing inside wanted.
    Keys.onPressed: event => event.accepted = pages.current?.scroll?.(event.key) ?? false

    Shortcut { sequence: "Ctrl+R"; onActivated: popover.view.refresh() }
    Shortcut { sequence: "Ctrl+,"; onActivated: popover.view.settingsRequested() }
    Shortcut { sequence: "Ctrl+Q"; onActivated: popover.view.quitRequested() }
    Shortcut { sequences: ["Ctrl+Tab", "Ctrl+PgDown"]; onActivated: tabs.step(1) }
    Shortcut { sequences: ["Ctrl+Shift+Tab", "Ctrl+PgUp"]; onActivated: tabs.step(-1) }

    Rectangle {
        anchors.fill: parent
        radius: popover.isRounded ? 2 * Theme.space.radius : 0
        color: Theme.colors.canvas
        border.width: 1
        border.color: Theme.colors.hairline
    }

    SegmentedControl {
        id: tabs
        x: Theme.space.l
        y: Theme.space.m
        width: pin.x - Theme.space.s - x
        name: "Sections"
        segments: [{ value: Segment.Usage, text: "Usage" }, { value: Segment.Stats, text: "Stats" }, { value: Segment.Models, text: "Models" }]
        value: popover.view.tab
        onChosen: value => popover.view.tab = value
    }

    IconButton {
        id: pin
        x: parent.width - Theme.space.l - width
        anchors.verticalCenter: tabs.verticalCenter
        symbol: popover.view.isPinned ? "pin.fill" : "pin"
        text: popover.view.isPinned ? "Unpin the limits" : "Pin the limits"
        onClicked: popover.view.pinToggled()
    }

    HostBanner {
        id: banner
        x: Theme.space.l
        y: tabs.y + tabs.height + Theme.space.m
        width: parent.width - 2 * Theme.space.l
        advice: popover.view.hostAdvice
    }

    Item {
        id: pages
        readonly property Item current: (usage.isChosen ? usage : stats.isChosen ? stats : models).item

        y: banner.y + banner.height
        width: parent.width
        height: Math.max(0, footer.y - y)

        // A page comes into being when it is first looked at, and stays.
        Loader {
            id: usage
            anchors.fill: parent
            readonly property bool isChosen: popover.view.tab === Segment.Usage
            active: visible || status === Loader.Ready
            visible: isChosen
            sourceComponent: UsageTab { view: popover.view.usage }
        }
        Loader {
            id: stats
            anchors.fill: parent
            readonly property bool isChosen: popover.view.tab === Segment.Stats
            active: visible || status === Loader.Ready
            visible: isChosen
            sourceComponent: StatsTab { view: popover.view.stats; active: stats.visible }
        }
        Loader {
            id: models
            anchors.fill: parent
            readonly property bool isChosen: popover.view.tab === Segment.Models
            active: visible || status === Loader.Ready
            visible: isChosen
            sourceComponent: ModelsTab { view: popover.view.models; active: models.visible }
        }
    }

    PopoverFooter {
        id: footer
        y: parent.height - height
        width: parent.width
        status: popover.view.footer.state
        onRefresh: popover.view.refresh()
        onSettings: popover.view.settingsRequested()
        onPasteSummary: popover.view.pasteSummary()
        onCopySummary: popover.view.copySummary()
    }
}
