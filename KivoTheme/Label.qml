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
    // Said, it is mirrored with the layout; unsaid, English stays at the left.
    horizontalAlignment: Text.AlignLeft
    Accessible.role: Accessible.StaticText
    Accessible.ignored: text === ""
    Accessible.name: text
}
