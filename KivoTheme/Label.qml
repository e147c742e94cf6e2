import QtQuick
import Kivo.Theme

/// Text in the theme's type. Every text of the interface is one.
Text {
    property int size: Theme.type.body

    color: Theme.colors.text
    font.family: Theme.type.family
    font.pixelSize: size
    renderType: Text.QtRendering
    textFormat: Text.PlainText
    elide: Text.ElideRight
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
