import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// Offers the table for the clipboard, and says for a moment that it is there.
IconButton {
    id: button
    signal textWanted
    signal csvWanted

    property bool isDone: false
    property bool byKeyboard: false
    function confirm() {
        isDone = true
        calm.restart()
    }

    symbol: isDone ? "check" : "copy"
    text: isDone ? "Copied" : "Copy table"
    onClicked: {
        byKeyboard = visualFocus
        menu.active = true
    }

    // A window that closes under its menu opens again without it.
    readonly property bool isOnScreen: Window.visibility !== Window.Hidden
    onIsOnScreenChanged: if (!isOnScreen) menu.active = false

    Timer {
        id: calm
        interval: 1600
        onTriggered: button.isDone = false
    }
    // Made when it is first wanted.
    Loader {
        id: menu
        active: false
        onLoaded: item.open()
        sourceComponent: T.Menu {
            id: choices
            x: button.LayoutMirroring.enabled ? 0 : button.width - width
            y: button.height + Theme.space.xs
            width: 168
            height: contentItem.implicitHeight + 2 * padding
            padding: Theme.space.xs
            // The keyboard was the menu's, and nobody else would have it once that is gone.
            onClosed: {
                button.forceActiveFocus(button.byKeyboard ? Qt.TabFocusReason : Qt.PopupFocusReason)
                menu.active = false
            }

            component Choice: T.MenuItem {
                id: choice
                implicitWidth: choices.width - 2 * choices.padding
                implicitHeight: 28
                Accessible.name: text
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
            Choice { text: "Copy as Text"; onTriggered: button.textWanted() }
            Choice { text: "Copy as CSV"; onTriggered: button.csvWanted() }

            contentItem: ListView {
                implicitHeight: contentHeight
                model: choices.contentModel
                currentIndex: choices.currentIndex
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
