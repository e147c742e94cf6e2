import QtQuick
import QtQuick.Templates as T
import Kivo.Theme

/// An action in running text.
T.Button {
    id: button
    property int size: Theme.type.body

    implicitWidth: Math.ceil(label.implicitWidth)
    implicitHeight: label.implicitHeight
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.name: text
    Accessible.onPressAction: press()
    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()

    function press() {
        if (checkable)
            toggle()
        clicked()
    }

    HoverHandler { cursorShape: Qt.PointingHandCursor }
    contentItem: Label {
        id: label
        text: button.text
        size: button.size
        font.weight: Font.Medium
        font.underline: button.hovered
        color: Theme.colors.accentText
    }
    background: Item { readonly property real radius: 2 }
    FocusRing {}
}
