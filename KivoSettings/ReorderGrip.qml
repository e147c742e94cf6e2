import QtQuick
import Kivo.Theme
import Kivo.Settings

/// What a ReorderItem is dragged by; also where the keyboard takes hold of it.
FocusScope {
    id: grip
    required property ReorderItem item
    /// What is moved.
    required property string name

    implicitWidth: 20
    implicitHeight: 28
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: "Move " + name
    Accessible.description: "Alt+Up and Alt+Down move it. Place " + (item.index + 1) + " of " + item.list.count
    Accessible.focusable: true
    Accessible.onIncreaseAction: item.list.move(item.index, item.index + 1)
    Accessible.onDecreaseAction: item.list.move(item.index, item.index - 1)

    Symbol {
        anchors.centerIn: parent
        name: "drag"
        color: hover.hovered || drag.active || grip.activeFocus ? Theme.colors.text : Theme.colors.secondaryText
    }
    FocusRing { visible: grip.activeFocus; distance: 0 }
    HoverHandler {
        id: hover
        cursorShape: drag.active ? Qt.ClosedHandCursor : Qt.OpenHandCursor
    }
    DragHandler {
        id: drag
        property real start: 0
        target: null
        xAxis.enabled: false
        dragThreshold: 2
        // The page below would scroll instead.
        grabPermissions: PointerHandler.CanTakeOverFromAnything
        onActiveChanged: {
            if (active)
                start = grip.item.restingY()
            else
                grip.item.drop()
        }
        onActiveTranslationChanged: if (active) grip.item.dragTo(start + activeTranslation.y)
    }
    TapHandler { onTapped: grip.forceActiveFocus(Qt.MouseFocusReason) }
}
