import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A copy button with a menu of what can be copied or pasted, and how.
CopyButton {
    id: button
    /// Of { text, run }.
    required property var choices
    property bool opensUpwards: false
    property bool byKeyboard: false
    isOpen: menu.active

    onClicked: {
        byKeyboard = visualFocus
        menu.active = true
    }

    // A window that closes under its menu opens again without it.
    readonly property bool isOnScreen: Window.visibility !== Window.Hidden
    onIsOnScreenChanged: if (!isOnScreen) menu.active = false

    // Made when it is first wanted.
    Loader {
        id: menu
        active: false
        onLoaded: item.open()
        sourceComponent: T.Menu {
            id: list
            x: button.LayoutMirroring.enabled ? 0 : button.width - width
            y: button.opensUpwards ? -height - Theme.space.xs : button.height + Theme.space.xs
            width: 168
            height: contentItem.implicitHeight + 2 * padding
            padding: Theme.space.xs
            // The keyboard was the menu's, and nobody else would have it once that is gone.
            onClosed: {
                button.forceActiveFocus(button.byKeyboard ? Qt.TabFocusReason : Qt.PopupFocusReason)
                menu.active = false
            }

            Repeater {
                model: button.choices
                T.MenuItem {
                    id: choice
                    required property var modelData
                    implicitWidth: list.width - 2 * list.padding
                    implicitHeight: 28
                    text: modelData.text
                    onTriggered: modelData.run()
                    Accessible.name: text
                    Accessible.onPressAction: triggered()
                    contentItem: Label {
                        leftPadding: Theme.space.s
                        rightPadding: Theme.space.s
                        text: choice.text
                        verticalAlignment: Text.AlignVCenter
                        Accessible.ignored: true
                    }
                    background: Rectangle {
                        radius: Theme.space.radius - 2
                        color: choice.highlighted ? Theme.colors.track : "transparent"
                    }
                }
            }

            contentItem: ListView {
                implicitHeight: contentHeight
                model: list.contentModel
                currentIndex: list.currentIndex
                interactive: false
            }
            background: Rectangle {
                radius: Theme.space.radius + Theme.space.xs
                color: Theme.colors.card
                border.width: 1
                border.color: Theme.colors.outline
            }
        }
    }
}
