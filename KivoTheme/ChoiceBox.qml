import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A choice of several, shown as a list when asked for.
T.ComboBox {
    id: box
    property string name
    /// What there is to choose: each an { id, label }.
    required property var choices
    property string current
    /// Calm enough to stand in a line with other choices.
    property bool small: false
    signal chosen(string id)

    model: choices.map(choice => choice.label)
    currentIndex: choices.findIndex(choice => choice.id === current)
    onActivated: index => chosen(choices[index].id)
    implicitWidth: 200
    implicitHeight: small ? 24 : 28
    leftPadding: Theme.space.m
    rightPadding: Theme.space.m
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: name
    // With the keyboard, as by hand: it is the list's while that is open, and another list closes.
    Accessible.onPressAction: {
        forceActiveFocus(Qt.OtherFocusReason);
        popup.visible ? popup.close() : popup.open();
    }

    // A window that closes under its list opens again without it.
    readonly property bool isOnScreen: Window.visibility !== Window.Hidden
    onIsOnScreenChanged: if (!isOnScreen) popup.close()

    contentItem: Label {
        text: box.displayText
        size: box.small ? Theme.type.caption : Theme.type.body
        verticalAlignment: Text.AlignVCenter
        Accessible.ignored: true
    }
    indicator: Symbol {
        x: box.mirrored ? Theme.space.s : box.width - width - Theme.space.s
        y: (box.height - height) / 2
        width: 14
        height: 14
        name: "chevron"
        color: Theme.colors.secondaryText
    }
    background: Rectangle {
        radius: Theme.space.radius
        color: box.pressed ? Theme.colors.pressed : box.hovered ? Theme.colors.hover : box.small ? Theme.colors.track : Theme.colors.card
        border.width: box.small && !Theme.highContrast ? 0 : 1
        border.color: Theme.colors.outline
    }
    FocusRing {}

    delegate: T.ItemDelegate {
        id: option
        required property int index
        required property string modelData

        width: box.width - 2 * Theme.space.xs
        height: 28
        highlighted: box.highlightedIndex === index
        Accessible.name: modelData
        Accessible.onPressAction: {
            box.activated(index)
            box.popup.close()
        }
        contentItem: Label {
            leftPadding: Theme.space.s
            text: option.modelData
            size: box.small ? Theme.type.caption : Theme.type.body
            verticalAlignment: Text.AlignVCenter
            font.weight: box.currentIndex === option.index ? Font.DemiBold : Font.Normal
            Accessible.ignored: true
        }
        background: Rectangle {
            radius: Theme.space.radius - 2
            color: option.highlighted ? Theme.colors.track : "transparent"
        }
    }
    popup: T.Popup {
        y: box.height + Theme.space.xs
        width: box.width
        height: Math.min(contentItem.implicitHeight, 240) + 2 * padding
        padding: Theme.space.xs
        margins: Theme.space.s // moves it up where it would leave the window
        contentItem: ListView {
            clip: true
            implicitHeight: contentHeight
            model: box.popup.visible ? box.delegateModel : null
            currentIndex: box.highlightedIndex
            T.ScrollBar.vertical: ThinScrollBar {}
        }
        background: Rectangle {
            radius: Theme.space.radius + Theme.space.xs
            color: Theme.colors.card
            border.width: 1
            border.color: Theme.colors.outline
        }
    }
}
