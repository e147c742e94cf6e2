import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A button that is one symbol; `text` is its name for screen readers and its tooltip.
T.Button {
    id: button
    required property string symbol
    /// What the button does is under way.
    property bool spins: false
    /// Something that it opened stands where its tooltip would.
    property bool isOpen: false

    implicitWidth: 28
    implicitHeight: 28
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    contentItem: Item {
        Spinner {
            anchors.centerIn: parent
            running: button.spins
            name: button.symbol
            color: button.enabled ? Theme.colors.secondaryText : Theme.colors.outline
        }
    }
    background: Rectangle {
        radius: Theme.space.radius
        color: button.down ? Theme.colors.pressed : button.hovered ? Theme.colors.hover : "transparent"
    }
    FocusRing { distance: 0 }
    HoverTip { text: button.text; wanted: (button.hovered || button.visualFocus) && !button.isOpen }
}
