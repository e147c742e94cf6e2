import QtQuick
import Kivo.Theme
import Tokwatch.Popover
import Tokwatch.Common

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
    Keys.onEscapePressed: closeRequested()
    Keys.forwardTo: [tabs]
    // What nothing inside wanted.
    Keys.onPressed: event => event.accepted = pages.current?.scroll?.(event.key) ?? false

    Shortcut { sequence: "Ctrl+R"; onActivated: popover.view.refresh() }
    Shortcut { sequence: "Ctrl+,"; onActivated: popover.view.settingsRequested() }
    Shortcut { sequence: "Ctrl+Q"; onActivated: popover.view.quitRequested() }
    Shortcut { sequences: ["Ctrl+Tab", "Ctrl+PgDown"]; onActivated: popover.view.tab = (popover.view.tab + 1) % 3 }
    Shortcut { sequences: ["Ctrl+Shift+Tab", "Ctrl+PgUp"]; onActivated: popover.view.tab = (popover.view.tab + 2) % 3 }

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
        width: parent.width - 2 * Theme.space.l
        name: "Sections"
        labels: ["Usage", "Stats", "Models"]
        currentIndex: popover.view.tab
        onChosen: index => popover.view.tab = index
    }

    HostBanner {
        id: banner
        x: Theme.space.l
        y: tabs.y + tabs.height + Theme.space.m
        width: tabs.width
        advice: popover.view.hostAdvice
    }

    Item {
        id: pages
        readonly property Item current: page(popover.view.tab)

        function page(index) {
            return (index === 0 ? usage : index === 1 ? stats : models).item
        }

        y: banner.y + banner.height
        width: parent.width
        height: Math.max(0, footer.y - y)

        // A page comes into being when it is first looked at, and stays.
        Loader {
            id: usage
            anchors.fill: parent
            active: visible || status === Loader.Ready
            visible: popover.view.tab === 0
            sourceComponent: UsageTab { view: popover.view.usage }
        }
        Loader {
            id: stats
            anchors.fill: parent
            active: visible || status === Loader.Ready
            visible: popover.view.tab === 1
            sourceComponent: StatsTab { view: popover.view.stats; active: stats.visible }
        }
        Loader {
            id: models
            anchors.fill: parent
            active: visible || status === Loader.Ready
            visible: popover.view.tab === 2
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
    }
}
