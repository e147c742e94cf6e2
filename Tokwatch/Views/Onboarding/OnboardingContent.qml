import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Onboarding

/// All of the welcome's window.
FocusScope {
    id: welcome
    required property OnboardingView view
    readonly property var nothingFound: ({
        id: "",
        name: "No assistant was found yet",
        reads: "",
        asks: "It will appear by itself once you have used one. Tokwatch looks in " + view.lookedAt.join(", ") + ".",
        switchText: ""
    })

    implicitWidth: 500
    implicitHeight: page.y + page.naturalHeight + page.ringRoom + edge.height + buttons.height
    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Dialog
    Accessible.name: title.text
    Keys.onEscapePressed: view.closeRequested()

    // Wherever the focus is, be it on a switch, the prominent button is what Return means.
    Shortcut { sequences: ["Return", "Enter"]; onActivated: welcome.view.finish() }
    Shortcut { sequence: "Ctrl+W"; onActivated: welcome.view.closeRequested() }

    Rectangle {
        anchors.fill: parent
        color: Theme.colors.canvas
    }

    Rectangle {
        id: tile
        anchors { left: parent.left; top: parent.top; leftMargin: Theme.space.xl; topMargin: 20 }
        width: 44
        height: 44
        radius: 11
        color: Theme.colors.accent
        ProviderMark {
            anchors.centerIn: parent
            width: 28
            height: 28
            color: Theme.colors.onAccent
        }
    }
    Column {
        anchors { left: tile.right; leftMargin: Theme.space.m; right: parent.right; rightMargin: Theme.space.xl }
        anchors.verticalCenter: tile.verticalCenter
        spacing: 2
        Label {
            width: parent.width
            id: title
            text: "Welcome to Tokwatch"
            size: Theme.type.figure
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Label {
            width: parent.width
            text: "What is left of your limits, and what your tokens would cost."
            color: Theme.colors.secondaryText
        }
    }

    ScrollColumn {
        id: page
        anchors { left: parent.left; right: parent.right; top: tile.bottom; topMargin: 14 - ringRoom; bottom: edge.top }
        inset: Theme.space.xl

        Card {
            width: parent.width
            verticalPadding: 14
            spacing: 14
            Repeater {
                model: welcome.view.steps.length > 0 ? welcome.view.steps : [welcome.nothingFound]
                OnboardingStepRow {
                    required property var modelData
                    width: page.width - 2 * page.inset - 2 * Theme.space.l
                    step: modelData
                    isAsked: welcome.view.asked[modelData.id] ?? false
                    onAskedToggled: isAsked => welcome.view.setAsked(modelData.id, isAsked)
                }
            }
        }

        component Fact: Item {
            id: fact
            required property string sentence
            default property alias sign: slot.data
            width: page.width - 2 * page.inset
            height: told.height
            Item {
                id: slot
                anchors { left: parent.left; leftMargin: Theme.space.l }
                width: 18
                height: 18
            }
            Label {
                id: told
                anchors { left: slot.right; leftMargin: Theme.space.m; right: parent.right; rightMargin: Theme.space.l }
                text: fact.sentence
                leading: 1.15
                size: Theme.type.caption
                color: Theme.colors.secondaryText
                wrapMode: Text.Wrap
            }
        }
        Fact {
            sentence: "Only times, models and token counts are read, never what was written. Services are asked only after you start."
            Symbol {
                width: 16
                height: 16
                x: 1
                name: "lock"
                color: Theme.colors.secondaryText
            }
        }
        Fact {
            sentence: welcome.view.hasStatusArea
                ? "You will find Tokwatch in your panel's status area: this sign or its number."
                : "There is no status area here: Tokwatch opens as a window."
            ProviderMark {
                width: 16
                height: 16
                x: 1
                y: -1
                color: Theme.colors.secondaryText
            }
        }
    }

    Rectangle {
        id: edge
        anchors { left: parent.left; right: parent.right; bottom: buttons.top }
        height: 1
        color: Theme.colors.hairline
    }
    Item {
        id: buttons
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: Theme.space.xl; rightMargin: Theme.space.xl }
        height: 56

        Toggle {
            id: login
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            text: "Start at login"
            checked: welcome.view.startsAtLogin
            onToggled: {
                welcome.view.startsAtLogin = checked
                checked = Qt.binding(() => welcome.view.startsAtLogin)
            }
        }
        Label {
            anchors { left: login.right; leftMargin: Theme.space.s; right: start.left; rightMargin: Theme.space.m }
            anchors.verticalCenter: parent.verticalCenter
            text: login.text
            Accessible.ignored: true
            TapHandler { onTapped: login.flip() }
        }
        ActionButton {
            id: start
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            text: "Start Using Tokwatch"
            prominent: true
            focus: true
            onClicked: welcome.view.finish()
        }
    }
}
