import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// A push button; `prominent` for the one thing that most will want.
T.Button {
    id: button
    property bool prominent: false

    implicitWidth: Math.ceil(Math.max(72, label.implicitWidth + 2 * Theme.space.m))
    implicitHeight: 28
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.name: text
    Accessible.onPressAction: button.clicked()
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    contentItem: Label {
        id: label
        text: button.text
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: button.prominent ? Theme.colors.onAccent : button.enabled ? Theme.colors.text : Theme.colors.secondaryText
    }
    background: Rectangle {
        radius: Theme.space.radius
        color: button.prominent ? Theme.colors.accent
             : button.down ? Theme.colors.pressed : button.hovered ? Theme.colors.hover : Theme.colors.card
        opacity: button.prominent && (button.down || button.hovered) ? 0.9 : 1
        border.width: button.prominent ? 0 : 1
        border.color: Theme.colors.outline
    }
    FocusRing {}
}
