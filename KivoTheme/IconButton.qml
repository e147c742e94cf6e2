import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A button that is one symbol; `text` is its name for screen readers and its tooltip.
T.Button {
    id: button
    required property string symbol

    implicitWidth: 28
    implicitHeight: 28
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.name: text

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: button.symbol
            color: button.enabled ? Theme.colors.secondaryText : Theme.colors.outline
        }
    }
    background: Rectangle {
        radius: Theme.space.radius
        color: button.down ? Theme.colors.pressed : button.hovered ? Theme.colors.hover : "transparent"
    }
    FocusRing { distance: 0 }
}
