import QtQuick
import Kivo.Theme
import Tokwatch.Common
import Tokwatch.Onboarding

/// All of the welcome's window.
FocusScope {
    id: welcome
    required property OnboardingView view

    implicitWidth: 500
    implicitHeight: 400
    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Dialog
    Accessible.name: view.title
    Keys.onEscapePressed: view.closeRequested()
    // Wherever the focus is, the prominent button is what Return means.
    Keys.onReturnPressed: view.next()
    Keys.onEnterPressed: view.next()

    Shortcut { sequence: "Ctrl+W"; onActivated: welcome.view.closeRequested() }

    Rectangle {
        anchors.fill: parent
        color: Theme.colors.canvas
    }

    Rectangle {
        id: tile
        anchors { left: parent.left; top: parent.top; margins: Theme.space.xl; topMargin: Theme.space.l + Theme.space.xs }
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
            text: welcome.view.title
            size: Theme.type.figure
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
        }
        Label {
            width: parent.width
            text: welcome.view.purpose
            color: Theme.colors.secondaryText
        }
    }

    OnboardingStepPage {
        anchors { left: parent.left; right: parent.right; top: tile.bottom; bottom: buttons.top }
        anchors { leftMargin: Theme.space.xl; rightMargin: Theme.space.xl; topMargin: Theme.space.l }
        step: welcome.view.step
        liveLimits: welcome.view.liveLimits
        onLiveLimitsToggled: isOn => welcome.view.liveLimits = isOn
    }

    Item {
        id: buttons
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: Theme.space.xl; rightMargin: Theme.space.xl }
        height: 60

        Row {
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            visible: welcome.view.count > 1
            spacing: 6
            Accessible.role: Accessible.StaticText
            Accessible.name: welcome.view.progress
            Repeater {
                model: welcome.view.count
                Rectangle {
                    required property int index
                    width: 6
                    height: 6
                    radius: 3
                    color: index === welcome.view.current ? Theme.colors.accent : Theme.colors.outline
                    opacity: index === welcome.view.current ? 1 : 0.5
                }
            }
        }
        Row {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: Theme.space.m
            LinkButton {
                anchors.verticalCenter: parent.verticalCenter
                visible: !welcome.view.isLast
                text: "Skip"
                onClicked: welcome.view.skip()
            }
            ActionButton {
                visible: !welcome.view.isFirst
                text: "Back"
                onVisibleChanged: if (!visible && focus) next.forceActiveFocus()
                onClicked: welcome.view.back()
            }
            ActionButton {
                id: next
                text: welcome.view.nextText
                prominent: true
                focus: true
                onClicked: welcome.view.next()
            }
        }
    }
}
